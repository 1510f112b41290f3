#include "Platform/Linux/Text/EnvironmentLocale.h"

#include <gtest/gtest.h>

#include "Tests/Platform/ScopedVariable.h"

namespace platform {
namespace {

TEST(EnvironmentLocale, TakesTheLanguageFromTheEnvironment) {
  const ScopedVariable language("LANG", "de_DE.UTF-8");
  const ScopedVariable collate("LC_COLLATE", nullptr);
  const ScopedVariable all("LC_ALL", "");
  EXPECT_EQ(environmentLocale("LC_COLLATE"), "de_DE.UTF-8");
  {
    const ScopedVariable swedish("LC_COLLATE", "sv_SE.UTF-8");
    EXPECT_EQ(environmentLocale("LC_COLLATE"), "sv_SE.UTF-8");
    const ScopedVariable finnish("LC_ALL", "fi_FI.UTF-8");
    EXPECT_EQ(environmentLocale("LC_COLLATE"), "fi_FI.UTF-8");
  }
  const ScopedVariable none("LANG", nullptr);
  EXPECT_EQ(environmentLocale("LC_COLLATE"), "");
}

}  // namespace
}  // namespace platform
