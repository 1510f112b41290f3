#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Ports/FileManager.h"

namespace platform {

/// A folder for the files of a test.
template <typename Files>
class FileManagerTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::string at(const char* name) const { return (folder.path() / name).string(); }

  static std::string textOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  static mode_t modeOf(const std::string& path) {
    return static_cast<mode_t>(std::filesystem::status(path).permissions());
  }

  [[nodiscard]] std::ptrdiff_t filesInFolder() const {
    return std::distance(std::filesystem::directory_iterator(folder.path()), {});
  }

  testing::TemporaryFolder folder;
  Files files;
};

/// The contract of file managers, which every system's file manager keeps.
template <typename Files>
class FileManagerContract : public FileManagerTest<Files> {};

TYPED_TEST_SUITE_P(FileManagerContract);

TYPED_TEST_P(FileManagerContract, KnowsAHomeFolderThatExists) {
  EXPECT_EQ(this->files.homeDirectory().substr(0, 1), "/");
  EXPECT_TRUE(this->files.exists(this->files.homeDirectory()));
}

TYPED_TEST_P(FileManagerContract, MakesAFolderWithAllThatLeadToIt) {
  EXPECT_EQ(this->files.createDirectory(this->at("a/b/c")), std::nullopt);
  EXPECT_TRUE(std::filesystem::is_directory(this->at("a/b/c")));
  EXPECT_EQ(this->files.createDirectory(this->at("a/b/c")), std::nullopt);
}

TYPED_TEST_P(FileManagerContract, SaysWhyAFolderCannotBeMade) {
  this->folder.write("a", "a file");
  EXPECT_NE(this->files.createDirectory(this->at("a/b")).value_or(""), "");
  EXPECT_NE(this->files.createDirectory(this->at("a")).value_or(""), "");
}

TYPED_TEST_P(FileManagerContract, WritesAndReplacesAFileAndLeavesNothingBesideIt) {
  EXPECT_EQ(this->files.writeAtomically(this->at("a"), "one"), std::nullopt);
  EXPECT_EQ(this->textOf(this->at("a")), "one");
  EXPECT_EQ(this->files.writeAtomically(this->at("a"), "two"), std::nullopt);
  EXPECT_EQ(this->textOf(this->at("a")), "two");
  EXPECT_EQ(this->filesInFolder(), 1);
}

TYPED_TEST_P(FileManagerContract, GivesANewFileTheModeThatTheMaskLeaves) {
  const mode_t former = umask(027);
  const auto failure = this->files.writeAtomically(this->at("a"), "one");
  umask(former);
  EXPECT_EQ(failure, std::nullopt);
  EXPECT_EQ(this->modeOf(this->at("a")), mode_t{0640});
}

TYPED_TEST_P(FileManagerContract, KeepsTheModeOfAFileThatItReplaces) {
  this->folder.write("a", "one");
  for (const mode_t mode : {mode_t{0600}, mode_t{0666}, mode_t{0755}}) {
    ASSERT_EQ(chmod(this->at("a").c_str(), mode), 0);
    EXPECT_EQ(this->files.writeAtomically(this->at("a"), "two"), std::nullopt);
    EXPECT_EQ(this->modeOf(this->at("a")), mode);
  }
}

TYPED_TEST_P(FileManagerContract, SaysWhyAFileCannotBeWrittenAndLeavesNothingBesideIt) {
  EXPECT_NE(this->files.writeAtomically(this->at("none/a"), "one").value_or(""), "");
  std::filesystem::create_directory(this->at("b"));
  EXPECT_NE(this->files.writeAtomically(this->at("b"), "one").value_or(""), "");
  EXPECT_EQ(this->filesInFolder(), 1);
}

TYPED_TEST_P(FileManagerContract, RemovesWhatExists) {
  this->folder.write("a", "one");
  EXPECT_TRUE(this->files.exists(this->at("a")));
  EXPECT_TRUE(this->files.remove(this->at("a")));
  EXPECT_FALSE(this->files.exists(this->at("a")));
  EXPECT_FALSE(this->files.remove(this->at("a")));
}

TYPED_TEST_P(FileManagerContract, SaysThatItCannotRemove) {
  std::filesystem::create_directories(this->at("a/b"));
  EXPECT_FALSE(this->files.remove(this->at("a")));
  EXPECT_TRUE(this->files.exists(this->at("a")));
}

REGISTER_TYPED_TEST_SUITE_P(FileManagerContract, KnowsAHomeFolderThatExists,
                            MakesAFolderWithAllThatLeadToIt, SaysWhyAFolderCannotBeMade,
                            WritesAndReplacesAFileAndLeavesNothingBesideIt,
                            GivesANewFileTheModeThatTheMaskLeaves,
                            KeepsTheModeOfAFileThatItReplaces,
                            SaysWhyAFileCannotBeWrittenAndLeavesNothingBesideIt, RemovesWhatExists,
                            SaysThatItCannotRemove);

}  // namespace platform
