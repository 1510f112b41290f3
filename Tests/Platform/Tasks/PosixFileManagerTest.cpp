#include "Platform/Posix/Tasks/PosixFileManager.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/HomeFolder.h"
#include "Tests/Platform/Support/PlainErrorWords.h"
#include "Tests/Platform/Tasks/FileManagerContract.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

struct PlainFileManager : PosixFileManager {
  PlainFileManager() : PosixFileManager(lastingHomeFolder(), testing::plainErrorWords) {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, PlainFileManager);

using PosixFileManagerTest = FileManagerTest<PlainFileManager>;

TEST_F(PosixFileManagerTest, HasTheGivenHomeFolderWithoutASlashAtItsEnd) {
  EXPECT_EQ(PosixFileManager("/home/me//", testing::plainErrorWords).homeDirectory(), "/home/me");
}

TEST_F(PosixFileManagerTest, SaysInTheGivenWordsWhyItFailed) {
  folder.write("a", "a file");
  EXPECT_EQ(files.createDirectory(at("a/b")), "Not a directory");
  EXPECT_EQ(files.createDirectory(at("a")), "Not a directory");
  EXPECT_EQ(files.writeAtomically(at("none/a"), "one"), "No such file or directory");
  fs::create_directory(at("b"));
  EXPECT_EQ(files.writeAtomically(at("b"), "one"), "Is a directory");
  PosixFileManager other("/", [](int error) { return "error " + std::to_string(error); });
  EXPECT_EQ(other.createDirectory(at("a/b")), "error " + std::to_string(ENOTDIR));
  EXPECT_EQ(other.writeAtomically(at("none/a"), "one"), "error " + std::to_string(ENOENT));
}

TEST_F(PosixFileManagerTest, WritesUnderAHiddenNameFirst) {
  const Descriptor events(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  ASSERT_GE(inotify_add_watch(events.get(), folder.path().c_str(), IN_CREATE), 0);
  EXPECT_EQ(files.writeAtomically(at("a"), "one"), std::nullopt);
  alignas(inotify_event) std::array<char, 4096> buffer{};
  ASSERT_GT(read(events.get(), buffer.data(), buffer.size()), 0);
  const auto* event = reinterpret_cast<const inotify_event*>(buffer.data());
  EXPECT_EQ(std::string(event->name).substr(0, 3), ".a.");
}

TEST_F(PosixFileManagerTest, WritesEvenIfAnEarlierProcessLeftItsFileBehind) {
  const std::string leftBehind = ".a." + std::to_string(getpid()) + ".0";
  folder.write(leftBehind, "half a");
  EXPECT_EQ(files.writeAtomically(at("a"), "one"), std::nullopt);
  EXPECT_EQ(textOf(at("a")), "one");
  EXPECT_EQ(textOf(at(leftBehind.c_str())), "half a");
  EXPECT_EQ(filesInFolder(), 2);
}

}  // namespace
}  // namespace platform
