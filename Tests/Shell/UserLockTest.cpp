#include "Staylit/Desktop/Session/UserLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using Outcome = UserLock::Outcome;

class UserLockTest : public ::testing::Test {
 protected:
  platform::testing::TemporaryFolder folder;
};

TEST_F(UserLockTest, OneHasItUntilItsEnd) {
  std::optional<UserLock> first(folder.path());
  UserLock second(folder.path());
  EXPECT_EQ(second.holder(), std::nullopt);
  EXPECT_EQ(first->take(), Outcome::taken);
  EXPECT_EQ(first->take(), Outcome::taken) << "it has it";
  EXPECT_EQ(second.take(), Outcome::held);
  EXPECT_EQ(second.holder(), ::getpid());
  first.reset();
  EXPECT_EQ(second.holder(), std::nullopt);
  EXPECT_EQ(second.take(), Outcome::taken);
}

TEST_F(UserLockTest, IsInTheRuntimeFolder) {
  const platform::testing::ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.path().string());
  UserLock lock;
  EXPECT_TRUE(lock.hasFolder());
  EXPECT_EQ(lock.take(), Outcome::taken);
  EXPECT_EQ(UserLock(folder.path()).holder(), ::getpid());
}

TEST_F(UserLockTest, RefusesAFolderThatOthersMayUse) {
  ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
  UserLock lock(folder.path());
  EXPECT_FALSE(lock.hasFolder());
  EXPECT_EQ(lock.take(), Outcome::noFolder);
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "staylit.lock"));
}

TEST_F(UserLockTest, FollowsNoLinkAndWaitsForNoPipe) {
  std::filesystem::create_symlink(folder.path() / "elsewhere", folder.path() / "staylit.lock");
  EXPECT_EQ(UserLock(folder.path()).take(), Outcome::noFolder);
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "elsewhere"));
  std::filesystem::remove(folder.path() / "staylit.lock");
  ASSERT_EQ(::mkfifo((folder.path() / "staylit.lock").c_str(), 0600), 0);
  EXPECT_EQ(UserLock(folder.path()).take(), Outcome::noFolder);
  EXPECT_EQ(UserLock(folder.path()).holder(), std::nullopt);
}

TEST_F(UserLockTest, DoesWithoutAFolder) {
  UserLock lock(folder.path() / "missing");
  EXPECT_FALSE(lock.hasFolder());
  EXPECT_EQ(lock.take(), Outcome::noFolder);
  EXPECT_EQ(lock.holder(), std::nullopt);
}

}  // namespace
}  // namespace staylit
