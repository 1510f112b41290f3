#include "Platform/Posix/Tasks/PosixFileManager.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class PosixFileManagerTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::string at(const char* name) const { return (folder.path() / name).string(); }

  static std::string textOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  testing::TemporaryFolder folder;
  PosixFileManager files;
};

TEST_F(PosixFileManagerTest, KnowsTheHomeFolderWithoutASlashAtItsEnd) {
  const testing::ScopedEnvironment home("HOME", "/home/me//");
  EXPECT_EQ(files.homeDirectory(), "/home/me");
}

TEST_F(PosixFileManagerTest, MakesAFolderWithAllThatLeadToIt) {
  EXPECT_EQ(files.createDirectory(at("a/b/c")), std::nullopt);
  EXPECT_TRUE(fs::is_directory(at("a/b/c")));
  EXPECT_EQ(files.createDirectory(at("a/b/c")), std::nullopt);
}

TEST_F(PosixFileManagerTest, SaysWhyAFolderCannotBeMade) {
  folder.write("a", "a file");
  EXPECT_EQ(files.createDirectory(at("a/b")), at("a/b") + ": Not a directory");
  EXPECT_EQ(files.createDirectory(at("a")), at("a") + ": Not a directory");
}

TEST_F(PosixFileManagerTest, WritesAndReplacesAFileAndLeavesNothingBesideIt) {
  EXPECT_EQ(files.writeAtomically(at("a"), "one"), std::nullopt);
  EXPECT_EQ(textOf(at("a")), "one");
  EXPECT_EQ(files.writeAtomically(at("a"), "two"), std::nullopt);
  EXPECT_EQ(textOf(at("a")), "two");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

TEST_F(PosixFileManagerTest, SaysWhyAFileCannotBeWritten) {
  EXPECT_EQ(files.writeAtomically(at("none/a"), "one"),
            at("none/a") + ": No such file or directory");
  fs::create_directory(at("b"));
  EXPECT_EQ(files.writeAtomically(at("b"), "one"), at("b") + ": Is a directory");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

TEST_F(PosixFileManagerTest, RemovesWhatExists) {
  folder.write("a", "one");
  EXPECT_TRUE(files.exists(at("a")));
  EXPECT_TRUE(files.remove(at("a")));
  EXPECT_FALSE(files.exists(at("a")));
  EXPECT_FALSE(files.remove(at("a")));
}

TEST_F(PosixFileManagerTest, SaysThatItCannotRemove) {
  fs::create_directories(at("a/b"));
  EXPECT_FALSE(files.remove(at("a")));
  EXPECT_TRUE(files.exists(at("a")));
}

}  // namespace
}  // namespace platform
