#include "Platform/Linux/Files/XdgFolders.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace platform {
namespace {

using Paths = std::vector<std::filesystem::path>;

TEST(XdgFolders, LooksForDataInTheUsersFolderFirst) {
  const testing::ScopedEnvironment home("HOME", "/home/user");
  const testing::ScopedEnvironment own("XDG_DATA_HOME", nullptr);
  const testing::ScopedEnvironment shared("XDG_DATA_DIRS", nullptr);
  EXPECT_EQ(xdgDataFolders(), (Paths{"/home/user/.local/share", "/usr/local/share", "/usr/share"}));
}

TEST(XdgFolders, TakesDataFoldersFromTheEnvironment) {
  const testing::ScopedEnvironment own("XDG_DATA_HOME", "/data");
  const testing::ScopedEnvironment shared("XDG_DATA_DIRS", "/a:relative::/b/");
  EXPECT_EQ(xdgDataFolders(), (Paths{"/data", "/a", "/b/"}));
}

TEST(XdgFolders, IgnoresListsWithoutAnAbsolutePath) {
  const testing::ScopedEnvironment own("XDG_DATA_HOME", "data");
  const testing::ScopedEnvironment home("HOME", "/home/user");
  for (const char* unusable : {"", ":", "a:b"}) {
    const testing::ScopedEnvironment shared("XDG_DATA_DIRS", unusable);
    EXPECT_EQ(xdgDataFolders(),
              (Paths{"/home/user/.local/share", "/usr/local/share", "/usr/share"}))
        << unusable;
  }
}

TEST(XdgFolders, LooksForSettingsInTheUsersFolderFirst) {
  const testing::ScopedEnvironment home("HOME", "/home/user");
  const testing::ScopedEnvironment own("XDG_CONFIG_HOME", nullptr);
  const testing::ScopedEnvironment none("XDG_CONFIG_DIRS", nullptr);
  EXPECT_EQ(xdgConfigFolders(), (Paths{"/home/user/.config", "/etc/xdg"}));
  const testing::ScopedEnvironment shared("XDG_CONFIG_DIRS", "/a:/b");
  EXPECT_EQ(xdgConfigFolders(), (Paths{"/home/user/.config", "/a", "/b"}));
}

}  // namespace
}  // namespace platform
