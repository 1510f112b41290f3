#include "Staylit/Desktop/StatusItem/StatusIcons.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using platform::testing::ScopedEnvironment;
using platform::testing::TemporaryFolder;

TEST(StatusIcons, AreFoundInTheDesktopsOwnThemes) {
  const TemporaryFolder share;
  share.write("icons/hicolor/scalable/status/staylit-cup-and-saucer-symbolic.svg", "<svg/>");
  const ScopedEnvironment folders("XDG_DATA_DIRS", "/nowhere:" + share.path().string());
  const StatusIcons icons = StatusIcons::ofThisProgram();
  EXPECT_TRUE(icons.areThere);
  EXPECT_EQ(icons.folder, "");
}

TEST(StatusIcons, AreNotThereWhereTheyAreNotInstalled) {
  const TemporaryFolder empty;
  const ScopedEnvironment home("XDG_DATA_HOME", empty.path().string());
  const ScopedEnvironment folders("XDG_DATA_DIRS", empty.path().string());
  EXPECT_FALSE(StatusIcons::ofThisProgram().areThere);
}

}  // namespace
}  // namespace staylit
