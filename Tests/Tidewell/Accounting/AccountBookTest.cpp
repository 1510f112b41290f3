#include "Tidewell/Accounting/AccountBook.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakeRunningApplications.h"

namespace tidewell {
namespace {

class AccountBookTest : public testing::Test {
 protected:
  std::int32_t use(const std::string& name, const Usage& usage) {
    const std::int32_t account = accounts.reserve("/bin/" + name, nullptr);
    accounts.add(account, usage);
    return account;
  }

  void nextPass() { accounts.nextPass(); }

  [[nodiscard]] Usage sum() const {
    Usage all;
    for (const AccountBook::Account& account : accounts.accounts())
      all += account.usage;
    return all;
  }

  [[nodiscard]] std::vector<std::string> listedKeys() const {
    std::vector<std::string> keys;
    for (const AccountBook::Account& account : accounts.accounts()) {
      if (account.isListed) keys.push_back(account.key);
    }
    return keys;
  }

  static FakeRunningApplication application(std::optional<std::string> bundleIdentifier,
                                            std::optional<std::string> localizedName) {
    return {7, std::move(bundleIdentifier), std::move(localizedName), std::make_shared<int>(0)};
  }

  using Keys = std::vector<std::string>;
  AccountBook accounts;
};

// Names.

TEST_F(AccountBookTest, ProgramsOfOneNameInTwoFoldersHaveOneAccount) {
  const auto account = accounts.reserve("/usr/bin/cc1", nullptr);
  EXPECT_EQ(accounts.reserve("/opt/gcc/cc1", nullptr), account);
  EXPECT_NE(accounts.reserve("/usr/bin/ld", nullptr), account);
  EXPECT_GT(account, 1'000'000'000) << "higher than the number of any process";
}

TEST_F(AccountBookTest, AllProgramsOfAnApplicationHaveOneAccount) {
  const auto editor = application("org.example.Editor", "Editor");
  const auto account = accounts.reserve("/opt/editor/main", &editor);
  EXPECT_EQ(accounts.reserve("/opt/editor/helper", &editor), account);
  EXPECT_NE(accounts.reserve("/opt/editor/main", nullptr), account);
}

TEST_F(AccountBookTest, TheApplicationOfAnAccountHasTheNumberOfTheAccount) {
  const auto editor = application("org.example.Editor", "Editor");
  const auto* account = accounts.find(accounts.reserve("/opt/editor/main", &editor));
  ASSERT_TRUE(account && account->application);
  EXPECT_EQ(account->key, "org.example.Editor");
  EXPECT_EQ(account->path, "/opt/editor/main");
  EXPECT_EQ(account->application->processIdentifier(), account->identifier);
  EXPECT_EQ(account->application->bundleIdentifier(), "org.example.Editor");
  EXPECT_EQ(account->application->localizedName(), "Editor");
}

TEST_F(AccountBookTest, AnApplicationWithoutIdentifierIsCountedUnderItsProgram) {
  const auto viewer = application(std::nullopt, "Viewer");
  const auto account = accounts.reserve("/opt/viewer", &viewer);
  EXPECT_EQ(accounts.reserve("/bin/viewer", nullptr), account);
  EXPECT_EQ(accounts.find(account)->application->localizedName(), "Viewer");
}

TEST_F(AccountBookTest, AnApplicationWithoutPathIsCountedUnderItsName) {
  const auto viewer = application(std::nullopt, "Viewer");
  EXPECT_EQ(accounts.find(accounts.reserve("", &viewer))->key, "Viewer");
}

// Adding.

TEST_F(AccountBookTest, AnAccountIsListedFromItsFirstAdditionOn) {
  const auto account = accounts.reserve("/bin/cc1", nullptr);
  EXPECT_EQ(listedKeys().size(), 0u);
  accounts.add(account, {});
  EXPECT_EQ(listedKeys().size(), 1u);
  accounts.add(account, {3, 30});
  accounts.add(account, {4, 40});
  EXPECT_EQ(listedKeys().size(), 1u);
  EXPECT_EQ(accounts.find(account)->usage, (Usage{7, 70}));
}

TEST_F(AccountBookTest, AddsNothingToAnAccountThatIsNotThere) {
  accounts.add(5, {3, 30});
  accounts.add(AccountBook::kFirstIdentifier + 9, {3, 30});
  EXPECT_EQ(sum(), Usage());
  EXPECT_EQ(accounts.find(5), nullptr);
}

// The end of an application.

TEST_F(AccountBookTest, DropsAnAccountThatDoesNotGrowAndHasNoProcess) {
  const auto account = use("tool", {3, 30});
  accounts.dropEnded();
  EXPECT_EQ(accounts.find(account)->usage, (Usage{3, 30})) << "it has grown on this pass";
  nextPass();
  use("tool", {4, 40});
  accounts.dropEnded();
  EXPECT_EQ(accounts.find(account)->usage, (Usage{7, 70}));
  nextPass();
  accounts.dropEnded();
  EXPECT_EQ(accounts.find(account), nullptr);
}

TEST_F(AccountBookTest, DropsOnlyTheAccountsThatDoNotGrow) {
  use("first", {3, 30});
  use("second", {5, 50});
  nextPass();
  use("second", {1, 10});
  use("third", {7, 70});
  accounts.dropEnded();
  EXPECT_EQ(listedKeys(), (Keys{"second", "third"}));
  EXPECT_EQ(sum(), (Usage{13, 130}));
}

TEST_F(AccountBookTest, KeepsTheAccountOfANameUnderWhichSomethingRuns) {
  const auto daemon = use("daemon", {3, 30});
  accounts.addProcess(daemon);
  accounts.addProcess(daemon);
  accounts.removeProcess(daemon);
  for (int pass = 0; pass < 1000; ++pass) {
    nextPass();
    accounts.dropEnded();
  }
  EXPECT_EQ(accounts.find(daemon)->usage, (Usage{3, 30}));
  EXPECT_EQ(listedKeys(), Keys{"daemon"});
}

TEST_F(AccountBookTest, DropsAnUnusedAccountWhenNothingRunsUnderItAnyMore) {
  nextPass();
  const auto account = accounts.reserve("/bin/idle", nullptr);
  accounts.addProcess(account);
  accounts.dropEnded();
  EXPECT_NE(accounts.find(account), nullptr);
  nextPass();
  accounts.removeProcess(account);
  accounts.dropEnded();
  EXPECT_EQ(accounts.find(account), nullptr);
  EXPECT_EQ(listedKeys().size(), 0u);
}

TEST_F(AccountBookTest, AddsAndRemovesNoProcessOfAnAccountThatIsNotThere) {
  accounts.addProcess(0);
  accounts.removeProcess(AccountBook::kFirstIdentifier + 9);
  EXPECT_EQ(accounts.find(0), nullptr);
}

TEST_F(AccountBookTest, RemovesNoMoreProcessesThanAnAccountHas) {
  const auto account = use("job", {3, 30});
  accounts.removeProcess(account);
  accounts.addProcess(account);
  nextPass();
  accounts.dropEnded();
  EXPECT_NE(accounts.find(account), nullptr);
}

TEST_F(AccountBookTest, ANameThatComesBackBeginsAtNothing) {
  const auto former = use("job", {3, 30});
  nextPass();
  accounts.dropEnded();
  const auto account = use("job", {1, 10});
  EXPECT_NE(account, former);
  EXPECT_EQ(accounts.find(account)->usage, (Usage{1, 10}));
}

// Parts of a usage.

TEST_F(AccountBookTest, APartHasTheSameShareOfTheBytesAsOfTheTime) {
  const Usage usage{8, 100};
  EXPECT_EQ(usage.part(0), Usage());
  EXPECT_EQ(usage.part(2), (Usage{2, 25}));
  EXPECT_EQ(usage.part(8), usage);
  EXPECT_EQ(usage.part(9), usage);
}

}  // namespace
}  // namespace tidewell
