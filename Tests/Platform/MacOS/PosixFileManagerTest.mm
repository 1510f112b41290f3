#include "Platform/Posix/Tasks/PosixFileManager.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using testing::TemporaryFolder;

TEST(PosixFileManager, WritesAFileInAFolderThatItMakes) {
  const TemporaryFolder folder;
  PosixFileManager files;
  const std::string made = folder.path() / "a/b";
  EXPECT_EQ(files.createDirectory(made), std::nullopt);
  EXPECT_EQ(files.createDirectory(made), std::nullopt) << "it is there";
  EXPECT_EQ(files.writeAtomically(made + "/file", "one"), std::nullopt);
  EXPECT_EQ(files.writeAtomically(made + "/file", "two"), std::nullopt);
  std::stringstream text;
  text << std::ifstream(made + "/file").rdbuf();
  EXPECT_EQ(text.str(), "two");
}

TEST(PosixFileManager, SaysWhyAFileCannotBeWritten) {
  const TemporaryFolder folder;
  PosixFileManager files;
  const auto failure = files.writeAtomically(folder.path() / "missing/file", "x");
  ASSERT_TRUE(failure);
  EXPECT_NE(*failure, "");
}

TEST(PosixFileManager, RemovesWhatIsThere) {
  const TemporaryFolder folder;
  PosixFileManager files;
  folder.write("file", "x");
  EXPECT_TRUE(files.exists(folder.path() / "file"));
  EXPECT_TRUE(files.remove(folder.path() / "file"));
  EXPECT_FALSE(files.exists(folder.path() / "file"));
  EXPECT_FALSE(files.remove(folder.path() / "file"));
}

TEST(PosixFileManager, KnowsTheHomeFolder) {
  PosixFileManager files;
  EXPECT_EQ(files.homeDirectory().front(), '/');
  EXPECT_TRUE(files.exists(files.homeDirectory()));
}

}  // namespace
}  // namespace platform
