#include "Tidewell/UsageAccounts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakeRunningApplications.h"

namespace tidewell {
namespace {

class UsageAccountsTest : public testing::Test {
 protected:
  std::int32_t use(const std::string& name, const Usage& usage) {
    const std::int32_t account = accounts.reserve("/bin/" + name, nullptr);
    accounts.add(account, usage);
    return account;
  }

  void passes(int count) {
    for (int pass = 0; pass < count; ++pass)
      accounts.nextPass();
  }

  [[nodiscard]] Usage sum() const {
    Usage all;
    for (const UsageAccounts::Account& account : accounts.accounts())
      all += account.usage;
    return all;
  }

  [[nodiscard]] std::vector<std::string> listedKeys() const {
    std::vector<std::string> keys;
    for (const UsageAccounts::Account& account : accounts.accounts()) {
      if (account.isListed) keys.push_back(account.key);
    }
    return keys;
  }

  static FakeRunningApplication application(std::optional<std::string> bundleIdentifier,
                                            std::optional<std::string> localizedName) {
    return {7, std::move(bundleIdentifier), std::move(localizedName), std::make_shared<int>(0)};
  }

  using Keys = std::vector<std::string>;
  UsageAccounts accounts;
};

// Names.

TEST_F(UsageAccountsTest, OneNameHasOneAccountWhereverItsProgramLies) {
  const auto account = accounts.reserve("/usr/bin/cc1", nullptr);
  EXPECT_EQ(accounts.reserve("/opt/gcc/cc1", nullptr), account);
  EXPECT_NE(accounts.reserve("/usr/bin/ld", nullptr), account);
  EXPECT_GT(account, 1'000'000'000) << "beyond the numbers of processes";
}

TEST_F(UsageAccountsTest, AnApplicationHasOneAccountWhateverItsProgramsAreCalled) {
  const auto editor = application("org.example.Editor", "Editor");
  const auto account = accounts.reserve("/opt/editor/main", &editor);
  EXPECT_EQ(accounts.reserve("/opt/editor/helper", &editor), account);
  EXPECT_NE(accounts.reserve("/opt/editor/main", nullptr), account);
}

TEST_F(UsageAccountsTest, AnAccountCarriesTheApplicationUnderItsOwnNumber) {
  const auto editor = application("org.example.Editor", "Editor");
  const auto* account = accounts.find(accounts.reserve("/opt/editor/main", &editor));
  ASSERT_TRUE(account && account->application);
  EXPECT_EQ(account->key, "org.example.Editor");
  EXPECT_EQ(account->path, "/opt/editor/main");
  EXPECT_EQ(account->application->processIdentifier(), account->identifier);
  EXPECT_EQ(account->application->bundleIdentifier(), "org.example.Editor");
  EXPECT_EQ(account->application->localizedName(), "Editor");
}

TEST_F(UsageAccountsTest, AnApplicationWithoutIdentifierGoesByItsProgram) {
  const auto viewer = application(std::nullopt, "Viewer");
  const auto account = accounts.reserve("/opt/viewer", &viewer);
  EXPECT_EQ(accounts.reserve("/bin/viewer", nullptr), account);
  EXPECT_EQ(accounts.find(account)->application->localizedName(), "Viewer");
}

TEST_F(UsageAccountsTest, AnApplicationWithoutPathGoesByItsName) {
  const auto viewer = application(std::nullopt, "Viewer");
  EXPECT_EQ(accounts.find(accounts.reserve("", &viewer))->key, "Viewer");
}

// Adding.

TEST_F(UsageAccountsTest, IsListedFromTheFirstAdditionOn) {
  const auto account = accounts.reserve("/bin/cc1", nullptr);
  EXPECT_EQ(accounts.listedCount(), 0u);
  accounts.add(account, {});
  EXPECT_EQ(accounts.listedCount(), 1u);
  accounts.add(account, {3, 30});
  accounts.add(account, {4, 40});
  EXPECT_EQ(accounts.listedCount(), 1u);
  EXPECT_EQ(accounts.find(account)->usage, (Usage{7, 70}));
}

TEST_F(UsageAccountsTest, AddsNothingToAnAccountThatIsNotThere) {
  accounts.add(5, {3, 30});
  accounts.add(UsageAccounts::kFirstIdentifier + 9, {3, 30});
  EXPECT_EQ(sum(), Usage());
  EXPECT_EQ(accounts.find(5), nullptr);
}

// Folding.

TEST_F(UsageAccountsTest, FoldsAnAccountThatHasNotGrownForFiveMinutes) {
  const auto old = use("old", {3, 30});
  passes(149);
  accounts.fold({});
  EXPECT_NE(accounts.find(old), nullptr);
  passes(1);
  const auto late = use("late", {4, 40});
  accounts.fold({});
  EXPECT_EQ(accounts.find(old), nullptr);
  EXPECT_EQ(accounts.find(late)->usage, (Usage{4, 40}));
}

TEST_F(UsageAccountsTest, WhatIsFoldedStaysInTheSumWithoutAName) {
  use("first", {3, 30});
  use("second", {5, 50});
  passes(150);
  use("third", {7, 70});
  accounts.fold({});
  EXPECT_EQ(sum(), (Usage{15, 150}));
  EXPECT_EQ(listedKeys(), (Keys{"", "third"}));
  EXPECT_EQ(accounts.find(UsageAccounts::kFolded)->usage, (Usage{8, 80}));
  passes(150);
  accounts.fold({});
  EXPECT_EQ(listedKeys(), Keys{""}) << "which is never folded itself";
  EXPECT_EQ(sum(), (Usage{15, 150}));
}

TEST_F(UsageAccountsTest, KeepsTheAccountOfANameUnderWhichSomethingRuns) {
  const auto daemon = use("daemon", {3, 30});
  passes(1000);
  accounts.fold({{"daemon", true}});
  EXPECT_EQ(accounts.find(daemon)->usage, (Usage{3, 30}));
  EXPECT_EQ(listedKeys(), Keys{"daemon"}) << "there is nothing to fold";
}

TEST_F(UsageAccountsTest, DropsAnAccountThatWasNeverUsedOnceNothingRunsUnderIt) {
  const auto account = accounts.reserve("/bin/idle", nullptr);
  accounts.fold({{"idle", true}});
  EXPECT_NE(accounts.find(account), nullptr);
  accounts.fold({});
  EXPECT_EQ(accounts.find(account), nullptr);
}

TEST_F(UsageAccountsTest, ANameThatComesBackAfterItWasFoldedBeginsAtNothing) {
  const auto former = use("job", {3, 30});
  passes(150);
  accounts.fold({});
  const auto account = use("job", {1, 10});
  EXPECT_NE(account, former);
  EXPECT_EQ(accounts.find(account)->usage, (Usage{1, 10}));
  EXPECT_EQ(sum(), (Usage{4, 40}));
}

TEST_F(UsageAccountsTest, OfTooManyThoseThatGrewLongestAgoAreFolded) {
  for (int number = 0; number < 300; ++number) {
    use("job" + std::to_string(number), {1, 10});
    if (number % 100 == 99) passes(1);
  }
  use("job0", {1, 10});
  EXPECT_TRUE(accounts.isCrowded());
  accounts.fold({});
  EXPECT_FALSE(accounts.isCrowded());
  EXPECT_EQ(accounts.listedCount(), 257u) << "256 and that of what was folded";
  EXPECT_EQ(sum(), (Usage{301, 3010}));
  const Keys keys = listedKeys();
  EXPECT_EQ(keys.at(1), "job0") << "it has just grown again";
  EXPECT_EQ(keys.at(2), "job45") << "44 others had to go";
  EXPECT_EQ(keys.back(), "job299");
}

TEST_F(UsageAccountsTest, OfTooManyThoseOfRunningProgramsStay) {
  TextMap<bool> live;
  for (int number = 0; number < 300; ++number) {
    const std::string name = "job" + std::to_string(number);
    use(name, {1, 10});
    if (number < 290) live.emplace(name, true);
  }
  accounts.fold(live);
  EXPECT_EQ(accounts.listedCount(), 291u);
  EXPECT_EQ(accounts.find(UsageAccounts::kFolded)->usage, (Usage{10, 100}));
  EXPECT_EQ(sum(), (Usage{300, 3000}));
}

TEST_F(UsageAccountsTest, IsCrowdedAfterTwoMinutesOrWithTooMany) {
  passes(59);
  for (int number = 0; number < 256; ++number)
    use("job" + std::to_string(number), {});
  EXPECT_FALSE(accounts.isCrowded());
  use("another", {});
  EXPECT_TRUE(accounts.isCrowded());
  accounts.fold({});
  EXPECT_FALSE(accounts.isCrowded());
  passes(60);
  EXPECT_TRUE(accounts.isCrowded());
}

// Parts.

TEST_F(UsageAccountsTest, TheBytesAreSharedAsTheTimeIs) {
  const Usage usage{8, 100};
  EXPECT_EQ(usage.part(0), Usage());
  EXPECT_EQ(usage.part(2), (Usage{2, 25}));
  EXPECT_EQ(usage.part(8), usage);
  EXPECT_EQ(usage.part(9), usage);
}

}  // namespace
}  // namespace tidewell
