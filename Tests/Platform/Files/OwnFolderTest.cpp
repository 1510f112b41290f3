#include "Platform/Posix/Files/OwnFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class OwnFolderTest : public ::testing::Test {
 protected:
  static mode_t mode(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }
  [[nodiscard]] OwnFolder open() const { return OwnFolder::open(path, describeError); }
  [[nodiscard]] OwnFolder make() const { return OwnFolder::makeAll(path, describeError); }

  testing::TemporaryFolder temporary;
  fs::path path = temporary.path() / "above" / "own";
};

TEST_F(OwnFolderTest, IsMadeForItsUserAloneWithTheFoldersAboveIt) {
  EXPECT_TRUE(make());
  EXPECT_EQ(mode(path), 0700U);
  EXPECT_EQ(mode(path.parent_path()), 0700U);
  EXPECT_EQ(make().error, "");
}

TEST_F(OwnFolderTest, IsMadeAloneWhereTheFolderAboveMustExist) {
  EXPECT_EQ(OwnFolder::make(path, describeError).error, "No such file or directory");
  fs::create_directories(path.parent_path());
  EXPECT_TRUE(OwnFolder::make(path, describeError));
  EXPECT_EQ(mode(path), 0700U);
}

TEST_F(OwnFolderTest, IsNotMadeByOpeningIt) {
  EXPECT_EQ(open().error, "No such file or directory");
  EXPECT_FALSE(fs::exists(path.parent_path()));
}

TEST_F(OwnFolderTest, IsRefusedWhereOthersMayWriteToIt) {
  fs::create_directories(path);
  for (const fs::perms writers : {fs::perms::group_write, fs::perms::others_write}) {
    fs::permissions(path, fs::perms::owner_all | writers);
    EXPECT_EQ(make().error, "the folder belongs to another user, or others may write to it");
    EXPECT_FALSE(open());
  }
}

TEST_F(OwnFolderTest, IsRefusedWhenItIsAnotherUsers) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can make a folder of another user";
  ASSERT_TRUE(make());
  ASSERT_EQ(::chown(path.c_str(), 65'534, 65'534), 0);
  EXPECT_FALSE(make());
}

TEST_F(OwnFolderTest, IsNoLinkToAFolder) {
  fs::create_directories(temporary.path() / "real");
  fs::create_directories(path.parent_path());
  fs::create_symlink(temporary.path() / "real", path);
  EXPECT_EQ(make().error, "Not a directory");
}

}  // namespace
}  // namespace platform
