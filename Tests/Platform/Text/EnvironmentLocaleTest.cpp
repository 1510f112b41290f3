#include "Platform/Linux/Text/EnvironmentLocale.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace platform {
namespace {

TEST(EnvironmentLocale, TakesTheLanguageFromTheEnvironment) {
  const testing::ScopedEnvironment language("LANG", "de_DE.UTF-8");
  const testing::ScopedEnvironment collate("LC_COLLATE", nullptr);
  const testing::ScopedEnvironment all("LC_ALL", "");
  EXPECT_EQ(environmentLocale("LC_COLLATE"), "de_DE.UTF-8");
  {
    const testing::ScopedEnvironment swedish("LC_COLLATE", "sv_SE.UTF-8");
    EXPECT_EQ(environmentLocale("LC_COLLATE"), "sv_SE.UTF-8");
    const testing::ScopedEnvironment finnish("LC_ALL", "fi_FI.UTF-8");
    EXPECT_EQ(environmentLocale("LC_COLLATE"), "fi_FI.UTF-8");
  }
  const testing::ScopedEnvironment none("LANG", nullptr);
  EXPECT_EQ(environmentLocale("LC_COLLATE"), "");
}

}  // namespace
}  // namespace platform
