#include "Platform/Linux/Files/XdgFolders.h"

#include <gtest/gtest.h>

#include "Tests/Platform/ScopedVariable.h"

namespace platform {
namespace {

using Paths = std::vector<std::filesystem::path>;

TEST(XdgFolders, LooksForDataInTheUsersFolderFirst) {
  const ScopedVariable home("HOME", "/home/user");
  const ScopedVariable own("XDG_DATA_HOME", nullptr);
  const ScopedVariable shared("XDG_DATA_DIRS", nullptr);
  EXPECT_EQ(xdgDataFolders(), (Paths{"/home/user/.local/share", "/usr/local/share", "/usr/share"}));
}

TEST(XdgFolders, TakesDataFoldersFromTheEnvironment) {
  const ScopedVariable own("XDG_DATA_HOME", "/data");
  const ScopedVariable shared("XDG_DATA_DIRS", "/a:relative::/b/");
  EXPECT_EQ(xdgDataFolders(), (Paths{"/data", "/a", "/b/"}));
}

TEST(XdgFolders, IgnoresListsWithoutAnAbsolutePath) {
  const ScopedVariable own("XDG_DATA_HOME", "data");
  const ScopedVariable home("HOME", "/home/user");
  for (const char* unusable : {"", ":", "a:b"}) {
    const ScopedVariable shared("XDG_DATA_DIRS", unusable);
    EXPECT_EQ(xdgDataFolders(),
              (Paths{"/home/user/.local/share", "/usr/local/share", "/usr/share"}))
        << unusable;
  }
}

}  // namespace
}  // namespace platform
