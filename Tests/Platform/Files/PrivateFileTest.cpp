#include "Platform/Posix/Files/PrivateFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class PrivateFileTest : public ::testing::Test {
 protected:
  static std::string content(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  static mode_t mode(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }
  [[nodiscard]] std::ptrdiff_t files() const {
    return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
  }

  testing::TemporaryFolder folder;
  fs::path file = folder.path() / "page.html";
};

TEST_F(PrivateFileTest, IsForItsOwnerAlone) {
  EXPECT_EQ(writePrivateFile(file, "new"), "");
  EXPECT_EQ(content(file), "new");
  EXPECT_EQ(mode(file), 0600U);
  EXPECT_EQ(files(), 1);
}

TEST_F(PrivateFileTest, ReplacesAFileThatOthersCouldRead) {
  folder.write("page.html", "old");
  ::chmod(file.c_str(), 0644);
  EXPECT_EQ(writePrivateFile(file, "new"), "");
  EXPECT_EQ(content(file), "new");
  EXPECT_EQ(mode(file), 0600U);
}

TEST_F(PrivateFileTest, LeavesAnotherNameOfTheOldFileAlone) {
  folder.write("page.html", "old");
  fs::create_hard_link(file, folder.path("other"));
  EXPECT_EQ(writePrivateFile(file, "new"), "");
  EXPECT_EQ(content(folder.path("other")), "old");
}

TEST_F(PrivateFileTest, DoesNotFollowASymbolicLink) {
  folder.write("victim", "old");
  fs::create_symlink("victim", file);
  EXPECT_EQ(writePrivateFile(file, "new"), "there is a symbolic link in its place");
  EXPECT_EQ(content(folder.path("victim")), "old");
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(files(), 2);
}

TEST_F(PrivateFileTest, ReplacesNeitherAFolderNorAPipe) {
  fs::create_directory(file);
  EXPECT_EQ(writePrivateFile(file, "new"), "there is a folder in its place");
  fs::remove(file);
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(writePrivateFile(file, "new"), "there is something else than a file in its place");
}

TEST_F(PrivateFileTest, SaysThatItsFolderIsMissing) {
  EXPECT_EQ(writePrivateFile(folder.path("none/page.html"), "new"), "No such file or directory");
}

TEST_F(PrivateFileTest, KeepsTheOldFileWhereTheNewOneDoesNotFit) {
  folder.write("page.html", "old");
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
  const auto formerAction = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limited{4, former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
  const std::string why = writePrivateFile(file, "far too long");
  ::setrlimit(RLIMIT_FSIZE, &former);
  std::signal(SIGXFSZ, formerAction);
  EXPECT_EQ(why, "File too large");
  EXPECT_EQ(content(file), "old");
  EXPECT_EQ(files(), 1);
}

TEST_F(PrivateFileTest, HasAFolderForItsOwnerAlone) {
  const fs::path own = folder.path() / "own";
  EXPECT_EQ(makePrivateFolder(own), "");
  EXPECT_EQ(mode(own), 0700U);
  EXPECT_EQ(makePrivateFolder(own), "");
}

TEST_F(PrivateFileTest, RefusesAFolderToWhichOthersMayWrite) {
  const fs::path own = folder.path() / "own";
  fs::create_directory(own);
  ::chmod(own.c_str(), 0777);
  EXPECT_EQ(makePrivateFolder(own), "others may write to it");
}

TEST_F(PrivateFileTest, RefusesALinkToAFolder) {
  fs::create_directory(folder.path("real"));
  fs::create_symlink("real", folder.path("own"));
  EXPECT_EQ(makePrivateFolder(folder.path("own")),
            "there is something else than a folder in its place");
}

}  // namespace
}  // namespace platform
