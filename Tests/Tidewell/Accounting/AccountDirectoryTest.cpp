#include "Tidewell/Accounting/AccountDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace tidewell {
namespace {

constexpr std::int32_t kAccount = 0x4000'0001;
constexpr auto kMost = static_cast<std::int32_t>(AccountDirectory::kMostEnded);

class AccountDirectoryTest : public testing::Test {
 protected:
  /// Lets `count` processes start and end. Their numbers begin at 1000.
  void endOthers(std::int32_t count) {
    for (std::int32_t pid = 1000; pid < 1000 + count; ++pid) {
      accounts.assign(pid, kAccount + 9);
      accounts.noteEnd(pid);
    }
  }

  AccountDirectory accounts;
};

TEST_F(AccountDirectoryTest, TellsTheAccountOfAProcess) {
  accounts.assign(7, kAccount);
  EXPECT_EQ(accounts.accountOf(7), kAccount);
  EXPECT_EQ(accounts.accountOf(8), std::nullopt);
}

TEST_F(AccountDirectoryTest, AProcessUnderAnotherNameHasAnotherAccount) {
  accounts.assign(7, kAccount);
  accounts.assign(7, kAccount + 1);
  EXPECT_EQ(accounts.accountOf(7), kAccount + 1);
}

TEST_F(AccountDirectoryTest, StillTellsTheAccountOfAnEndedProcess) {
  accounts.assign(7, kAccount);
  accounts.noteEnd(7);
  endOthers(kMost - 1);
  EXPECT_EQ(accounts.accountOf(7), kAccount);
  EXPECT_EQ(accounts.accountOf(1000), kAccount + 9);
}

TEST_F(AccountDirectoryTest, ForgetsTheFirstEndedProcessWhenTooManyHaveEnded) {
  accounts.assign(7, kAccount);
  accounts.noteEnd(7);
  endOthers(kMost);
  EXPECT_EQ(accounts.accountOf(7), std::nullopt);
  EXPECT_EQ(accounts.accountOf(1000), kAccount + 9);
  endOthers(kMost);
  EXPECT_EQ(accounts.accountOf(1000), kAccount + 9) << "it has just ended again";
}

TEST_F(AccountDirectoryTest, NeverForgetsAProcessThatLives) {
  accounts.assign(7, kAccount);
  endOthers(3 * kMost);
  EXPECT_EQ(accounts.accountOf(7), kAccount);
}

TEST_F(AccountDirectoryTest, NeverForgetsALivingProcessThatHasTheNumberOfAnEndedOne) {
  accounts.assign(7, kAccount);
  accounts.noteEnd(7);
  accounts.assign(7, kAccount + 1);
  endOthers(3 * kMost);
  EXPECT_EQ(accounts.accountOf(7), kAccount + 1);
}

TEST_F(AccountDirectoryTest, TheLatestEndOfAProcessWithANumberCounts) {
  accounts.assign(7, kAccount);
  accounts.noteEnd(7);
  endOthers(kMost - 1);
  accounts.assign(7, kAccount + 1);
  accounts.noteEnd(7);
  endOthers(kMost - 1);
  EXPECT_EQ(accounts.accountOf(7), kAccount + 1);
}

TEST_F(AccountDirectoryTest, TheEndOfAnUnknownProcessChangesNothing) {
  accounts.noteEnd(7);
  EXPECT_EQ(accounts.accountOf(7), std::nullopt);
}

TEST_F(AccountDirectoryTest, TellsEachUseOfAnAccountOnce) {
  accounts.noteUse(kAccount);
  accounts.noteUse(kAccount + 1);
  EXPECT_EQ(accounts.takeUsed(), (std::vector{kAccount, kAccount + 1}));
  EXPECT_EQ(accounts.takeUsed(), std::vector<std::int32_t>());
}

TEST_F(AccountDirectoryTest, NoUseIsLostBetweenThreads) {
  constexpr int kThreads = 4;
  constexpr int kUses = 20'000;
  std::atomic<int> working = kThreads;
  std::vector<std::thread> users;
  for (int number = 0; number < kThreads; ++number) {
    users.emplace_back([this, number, &working] {
      for (int use = 0; use < kUses; ++use)
        accounts.noteUse(kAccount + number);
      --working;
    });
  }
  std::vector<int> taken(kThreads, 0);
  const auto take = [&] {
    for (const std::int32_t account : accounts.takeUsed())
      ++taken.at(static_cast<std::size_t>(account - kAccount));
  };
  while (working > 0)
    take();
  for (std::thread& user : users)
    user.join();
  take();
  EXPECT_EQ(taken, std::vector(kThreads, kUses));
}

TEST_F(AccountDirectoryTest, AReaderSeesTheRightAccountOrNone) {
  // The writer gives every process the account of its own number. Meanwhile others read.
  std::atomic<bool> isWriting = true;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> readers;
  for (int number = 0; number < 2; ++number) {
    readers.emplace_back([&] {
      while (isWriting) {
        for (std::int32_t pid = 1; pid < 200; ++pid) {
          const auto account = accounts.accountOf(pid);
          if (account && *account != kAccount + pid) ++wrong;
        }
      }
    });
  }
  for (int round = 0; round < 100; ++round) {
    for (std::int32_t pid = 1; pid < 200; ++pid)
      accounts.assign(pid, kAccount + pid);
    for (std::int32_t pid = 1; pid < 200; ++pid)
      accounts.noteEnd(pid);
  }
  isWriting = false;
  for (std::thread& reader : readers)
    reader.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(accounts.accountOf(199), kAccount + 199);
}

}  // namespace
}  // namespace tidewell
