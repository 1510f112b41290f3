#include "Platform/Posix/Files/HomeFolder.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace platform {
namespace {

constexpr uid_t kUnknownUser = 1'234'567;

/// The folder in the user database, read in another way than the code under test reads it.
std::filesystem::path databaseHome() {
  const passwd* entry = getpwuid(geteuid());
  return entry == nullptr ? std::filesystem::path() : entry->pw_dir;
}

TEST(HomeFolder, IsTakenFromTheEnvironment) {
  const testing::ScopedEnvironment home("HOME", "/home/user");
  EXPECT_EQ(homeFolder(), "/home/user");
}

TEST(HomeFolder, IsTakenFromTheUserDatabaseOtherwise) {
  for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative"}) {
    const testing::ScopedEnvironment home("HOME", unusable);
    EXPECT_TRUE(homeFolder().is_absolute());
  }
}

TEST(LastingHomeFolder, IsThatOfTheUserDatabaseWhateverTheEnvironmentSays) {
  if (!databaseHome().is_absolute()) GTEST_SKIP() << "the user database does not know this user";
  for (const char* other : {"/home/nobody-of-that-name", static_cast<const char*>(nullptr)}) {
    const testing::ScopedEnvironment home("HOME", other);
    EXPECT_EQ(lastingHomeFolder(), databaseHome());
  }
}

TEST(LastingHomeFolder, IsTakenFromTheEnvironmentForAnUnknownUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may be somebody else";
  ASSERT_EQ(getpwuid(kUnknownUser), nullptr);
  const testing::ScopedEnvironment home("HOME", "/home/user");
  ASSERT_EQ(seteuid(kUnknownUser), 0);
  const std::filesystem::path found = lastingHomeFolder();
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(found, "/home/user");
}

}  // namespace
}  // namespace platform
