#include "Platform/Posix/Files/PosixPrivateFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using Trust = PosixPrivateFolder::Trust;

mode_t modeOfPath(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

std::string textOfFile(const fs::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

class PosixPrivateFolderTest : public ::testing::Test {
 protected:
  testing::TemporaryFolder temporary;
  fs::path path = temporary.path() / "state" / "ring";
};

TEST_F(PosixPrivateFolderTest, MakesFolderAndFilesForTheUserAlone) {
  PosixPrivateFolder folder(path, Trust::own);
  EXPECT_TRUE(folder.list().empty());
  const auto creation = folder.create("b");
  ASSERT_TRUE(creation.file) << creation.error;
  EXPECT_EQ(creation.file->append("one"), "");
  EXPECT_EQ(creation.file->append(" two"), "");
  EXPECT_EQ(textOfFile(path / "b"), "one two");
  EXPECT_EQ(modeOfPath(path), 0700U);
  EXPECT_EQ(modeOfPath(path / "b"), 0600U);
  folder.create("a");
  const auto entries = folder.list();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].name, "a");
  EXPECT_EQ(entries[1].size, 7U);
  folder.remove("a");
  EXPECT_EQ(folder.list().size(), 1U);
}

TEST_F(PosixPrivateFolderTest, TouchesNothingThatIsThere) {
  PosixPrivateFolder folder(path, Trust::own);
  folder.create("a").file->append("old");
  EXPECT_EQ(folder.create("a").error, "File exists");
  fs::create_symlink(temporary.path() / "elsewhere", path / "link");
  EXPECT_EQ(folder.create("link").error, "File exists");
  EXPECT_EQ(textOfFile(path / "a"), "old");
  EXPECT_FALSE(fs::exists(temporary.path() / "elsewhere"));
  EXPECT_EQ(folder.list().size(), 1U) << "a link is no file";
}

TEST_F(PosixPrivateFolderTest, RefusesItsOwnFolderWhereOthersMayWrite) {
  fs::create_directories(path);
  fs::permissions(path, fs::perms(0777));
  EXPECT_EQ(PosixPrivateFolder(path, Trust::own).create("a").error,
            "the folder belongs to another user, or others may write to it");
  EXPECT_TRUE(PosixPrivateFolder(path, Trust::any).create("a").file);
}

TEST_F(PosixPrivateFolderTest, SaysWhyNothingCanBeMade) {
  EXPECT_EQ(PosixPrivateFolder({}, Trust::own).create("a").error, "there is no folder for it");
  temporary.write("file", "");
  EXPECT_EQ(PosixPrivateFolder(temporary.path() / "file", Trust::any).create("a").error,
            "Not a directory");
}

TEST_F(PosixPrivateFolderTest, MakesNoFolderThatTheUserHasMisspelt) {
  EXPECT_EQ(PosixPrivateFolder(path, Trust::any).create("a").error, "No such file or directory");
  EXPECT_FALSE(fs::exists(path.parent_path()));
}

TEST_F(PosixPrivateFolderTest, SaysWhenAFileWasRemovedWhileItGrows) {
  PosixPrivateFolder folder(path, Trust::own);
  const auto creation = folder.create("a");
  EXPECT_EQ(creation.file->append("one"), "");
  fs::remove_all(path);
  EXPECT_EQ(creation.file->append("two"), "it was removed");
  EXPECT_TRUE(folder.create("b").file);
}

}  // namespace
}  // namespace platform
