#include "Platform/Posix/Files/OwnFile.h"

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

class OwnFileTest : public ::testing::Test {
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

TEST_F(OwnFileTest, IsForItsOwnerAlone) {
  EXPECT_EQ(writeOwnFile(file, "new"), "");
  EXPECT_EQ(content(file), "new");
  EXPECT_EQ(mode(file), 0600U);
  EXPECT_EQ(files(), 1);
}

TEST_F(OwnFileTest, ReplacesAFileThatOthersCouldRead) {
  folder.write("page.html", "old");
  ::chmod(file.c_str(), 0644);
  EXPECT_EQ(writeOwnFile(file, "new"), "");
  EXPECT_EQ(content(file), "new");
  EXPECT_EQ(mode(file), 0600U);
}

TEST_F(OwnFileTest, LeavesAnotherNameOfTheOldFileAlone) {
  folder.write("page.html", "old");
  fs::create_hard_link(file, folder.path("other"));
  EXPECT_EQ(writeOwnFile(file, "new"), "");
  EXPECT_EQ(content(folder.path("other")), "old");
}

TEST_F(OwnFileTest, DoesNotFollowASymbolicLink) {
  folder.write("victim", "old");
  fs::create_symlink("victim", file);
  EXPECT_EQ(writeOwnFile(file, "new"), "there is a symbolic link in its place");
  EXPECT_EQ(content(folder.path("victim")), "old");
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(files(), 2);
}

TEST_F(OwnFileTest, ReplacesNeitherAFolderNorAPipe) {
  fs::create_directory(file);
  EXPECT_EQ(writeOwnFile(file, "new"), "there is a folder in its place");
  fs::remove(file);
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(writeOwnFile(file, "new"), "there is something else than a file in its place");
}

TEST_F(OwnFileTest, SaysThatItsFolderIsMissing) {
  EXPECT_EQ(writeOwnFile(folder.path("none/page.html"), "new"), "No such file or directory");
}

TEST_F(OwnFileTest, KeepsTheOldFileWhereTheNewOneDoesNotFit) {
  folder.write("page.html", "old");
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
  const auto formerAction = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limited{4, former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
  const std::string why = writeOwnFile(file, "far too long");
  ::setrlimit(RLIMIT_FSIZE, &former);
  std::signal(SIGXFSZ, formerAction);
  EXPECT_EQ(why, "File too large");
  EXPECT_EQ(content(file), "old");
  EXPECT_EQ(files(), 1);
}

}  // namespace
}  // namespace platform
