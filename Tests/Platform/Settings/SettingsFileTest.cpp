#include "Platform/Linux/Settings/SettingsFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Names = std::vector<std::string>;

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

/// Why the file cannot be replaced; empty when it was replaced.
std::string replace(const SettingsFile& file, std::string_view text) {
  const SettingsFile::Change change = file.replace(text, file.read(), file.lock());
  return change.outcome == FileReplacement::Outcome::done ? "" : "not done: " + change.error;
}

TEST(SettingsFile, ReadsAMissingFileAsEmpty) {
  const SettingsFolder folder;
  const RegularFile content = SettingsFile(folder.file()).read();
  EXPECT_EQ(content.text, "");
  EXPECT_EQ(content.error, "");
  EXPECT_EQ(content.stamp, FileStamp());
}

TEST(SettingsFile, StampChangesWithTheContent) {
  const SettingsFolder folder;
  const SettingsFile file(folder.file());
  folder.write("a");
  const FileStamp first = file.stamp();
  EXPECT_EQ(file.read().stamp, first);
  folder.write("ab");
  EXPECT_NE(file.stamp(), first);
}

TEST(SettingsFile, StampChangesWhenAnotherFileTakesItsPlace) {
  const SettingsFolder folder;
  const SettingsFile file(folder.file());
  folder.write("a");
  const FileStamp first = file.stamp();
  rename(folder.file().c_str(), folder.path("old").c_str());
  folder.write("b");
  EXPECT_NE(file.stamp(), first);
}

TEST(SettingsFile, StampSettlesAfterAWhile) {
  const SettingsFolder folder;
  folder.writeJustNow("a");
  EXPECT_FALSE(SettingsFile(folder.file()).stamp().isSettled());
  SettingsFolder::age(folder.file());
  EXPECT_TRUE(SettingsFile(folder.file()).stamp().isSettled());
}

TEST(SettingsFile, RefusesAFolder) {
  const SettingsFolder folder;
  mkdir(folder.file().c_str(), 0700);
  EXPECT_EQ(SettingsFile(folder.file()).read().error, "it is a folder");
}

TEST(SettingsFile, RefusesAPipeWithoutWaitingForAWriter) {
  const SettingsFolder folder;
  ASSERT_EQ(mkfifo(folder.file().c_str(), 0600), 0);
  EXPECT_EQ(SettingsFile(folder.file()).read().error, "it is not a regular file");
}

TEST(SettingsFile, RefusesADevice) {
  EXPECT_EQ(SettingsFile("/dev/zero").read().error, "it is not a regular file");
}

TEST(SettingsFile, RefusesAGigabyte) {
  const SettingsFolder folder;
  folder.write("");
  ASSERT_EQ(truncate(folder.file().c_str(), 1 << 30), 0);
  EXPECT_EQ(SettingsFile(folder.file()).read().error, "it is too large");
}

TEST(SettingsFile, ReadsUpToItsCapacity) {
  const SettingsFolder folder;
  folder.write(std::string(SettingsFile::kCapacity, '#'));
  EXPECT_EQ(SettingsFile(folder.file()).read().error, "");
  folder.write(std::string(SettingsFile::kCapacity + 1, '#'));
  EXPECT_EQ(SettingsFile(folder.file()).read().error, "it is too large");
}

TEST(SettingsFile, RefusesALinkToItself) {
  const SettingsFolder folder;
  std::filesystem::create_symlink("settings.toml", folder.file());
  const SettingsFile file(folder.file());
  EXPECT_EQ(file.read().error, "Too many levels of symbolic links");
}

TEST(SettingsFile, MakesFoldersForTheirOwnerAlone) {
  const SettingsFolder folder;
  const std::string path = folder.path("config/staylit/settings.toml");
  const SettingsFile file(path);
  EXPECT_EQ(replace(file, "a"), "");
  EXPECT_EQ(SettingsFolder::read(path), "a");
  EXPECT_EQ(modeOf(folder.path("config")), 0700U);
  EXPECT_EQ(modeOf(path), 0600U);
}

TEST(SettingsFile, KeepsTheMode) {
  const SettingsFolder folder;
  folder.write("a");
  chmod(folder.file().c_str(), 0644);
  const SettingsFile file(folder.file());
  EXPECT_EQ(replace(file, "b"), "");
  EXPECT_EQ(folder.read(), "b");
  EXPECT_EQ(modeOf(folder.file()), 0644U);
  EXPECT_EQ(folder.names(), Names{"settings.toml"});
}

TEST(SettingsFile, ReplacesTheFileThatALinkNames) {
  const SettingsFolder folder;
  mkdir(folder.path("real").c_str(), 0700);
  std::filesystem::create_symlink("real/other.toml", folder.path("middle"));
  std::filesystem::create_symlink(folder.path("middle"), folder.file());
  const SettingsFile file(folder.file());
  EXPECT_EQ(replace(file, "a"), "");
  EXPECT_EQ(replace(file, "b"), "");
  EXPECT_EQ(SettingsFolder::read(folder.path("real/other.toml")), "b");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file()));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("middle")));
}

TEST(SettingsFile, WaitsForTheLockOnlyForALimitedTime) {
  const SettingsFolder folder;
  const SettingsFile file(folder.file());
  const FolderLock held = file.lock();
  EXPECT_EQ(held.error(), "");
  EXPECT_EQ(file.lock().error(), "the folder is locked by another program");
}

TEST(SettingsFile, GivesTheLockBack) {
  const SettingsFolder folder;
  const SettingsFile file(folder.file());
  EXPECT_EQ(file.lock().error(), "");
  EXPECT_EQ(file.lock().error(), "");
}

TEST(SettingsFile, SaysWhyAFolderCannotBeMade) {
  const SettingsFolder folder;
  folder.write("");
  EXPECT_EQ(SettingsFile(folder.file() + "/sub/settings.toml").lock().error(), "Not a directory");
}

}  // namespace
}  // namespace platform
