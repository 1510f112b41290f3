#include "Platform/Linux/Sleep/InhibitorList.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeInhibitorList.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using Lines = std::vector<std::string>;

class InhibitorListTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    list = std::make_unique<InhibitorList>(*systemBus, *sessionBus, holders);
  }

  /// Each assertion as "holder type level". A named holder stands with its name.
  Lines assertions() {
    Lines result;
    const auto all = list->assertionsByProcess();
    if (!all) return {"absent"};
    for (const auto& [identifier, assertions] : *all) {
      const auto name = holders->applicationId(static_cast<std::int32_t>(identifier));
      for (const auto& assertion : assertions) {
        result.push_back(name.value_or(std::to_string(identifier)) + " " + assertion.type + " " +
                         std::to_string(assertion.level.value_or(-1)));
      }
    }
    return result;
  }

  std::unique_ptr<FakeLogind> logindListing(std::vector<FakeLogind::Entry> entries) {
    auto logind = std::make_unique<FakeLogind>(systemDaemon->address());
    logind->list(std::move(entries));
    return logind;
  }

  std::shared_ptr<NamedHolders> holders = std::make_shared<NamedHolders>();
  std::unique_ptr<InhibitorList> list;
};

TEST_F(InhibitorListTest, IsAbsentWhenNobodyCanBeAsked) {
  EXPECT_EQ(list->assertionsByProcess(), std::nullopt);
}

TEST_F(InhibitorListTest, IsAbsentWithoutABus) {
  systemDaemon->stop();
  sessionDaemon->stop();
  EXPECT_EQ(list->assertionsByProcess(), std::nullopt);
}

TEST_F(InhibitorListTest, IsEmptyWhenNothingIsHeld) {
  const auto logind = logindListing({});
  EXPECT_EQ(assertions(), Lines{});
}

TEST_F(InhibitorListTest, ReadsWhatABlockingLockBlocks) {
  const auto logind = logindListing({{"idle", "a", "why", "block", 1000, 1},
                                     {"sleep", "b", "why", "block", 1000, 2},
                                     {"shutdown:sleep:idle", "c", "why", "block-weak", 1000, 3}});
  EXPECT_EQ(assertions(), (Lines{"1 PreventUserIdleSystemSleep 255", "2 PreventSystemSleep 255",
                                 "3 PreventUserIdleSystemSleep 255", "3 PreventSystemSleep 255"}));
}

TEST_F(InhibitorListTest, CountsALockThatOnlyDelaysAsSwitchedOff) {
  const auto logind = logindListing(
      {{"sleep", "a", "why", "delay", 0, 1}, {"idle", "b", "why", "something new", 0, 2}});
  EXPECT_EQ(assertions(), (Lines{"1 PreventSystemSleep 0", "2 PreventUserIdleSystemSleep 0"}));
}

TEST_F(InhibitorListTest, SkipsLocksThatDoNotKeepTheMachineAwake) {
  const auto logind =
      logindListing({{"shutdown", "a", "why", "block", 0, 1},
                     {"handle-lid-switch:handle-suspend-key", "b", "why", "block", 0, 2},
                     {"handle-power-key", "c", "why", "block", 0, 3},
                     {"", "d", "why", "block", 0, 4}});
  EXPECT_EQ(assertions(), Lines{});
}

TEST_F(InhibitorListTest, GathersTheLocksOfOneProcess) {
  const auto logind = logindListing({{"idle", "a", "why", "block", 0, 7},
                                     {"idle", "b", "why", "block", 0, 8},
                                     {"sleep", "a", "why", "delay", 0, 7}});
  const auto all = list->assertionsByProcess();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 2U);
  EXPECT_EQ(all->at(0).process, 7);
  EXPECT_EQ(all->at(0).assertions.size(), 2U);
  EXPECT_EQ(all->at(1).process, 8);
}

TEST_F(InhibitorListTest, DropsTheLockByWhichGnomePassesOnItsOwnList) {
  const auto logind =
      logindListing({{"sleep:idle", "user", "user session inhibited", "block", 1000, 5},
                     {"idle", "user", "watching a film", "block", 1000, 6}});
  EXPECT_EQ(assertions(), Lines{"6 PreventUserIdleSystemSleep 255"});
}

TEST_F(InhibitorListTest, CleansTheNameAndTheReasonOfAHolder) {
  const auto logind = logindListing({{"idle", "a\x1B[2J", "why\a", "block", 1000, 6}});
  const auto agent = policyAgent(sessionDaemon->address(), {{"a\x1B[2J", "why\a"}});
  // The agent lists the same inhibitor again.
  const auto all = list->assertionsByProcess();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 1U);
  EXPECT_EQ(all->front().assertions.front().reason, "why\uFFFD");
}

TEST_F(InhibitorListTest, AddsWhatTheSessionManagerListsByName) {
  const auto logind = logindListing({{"idle", "a", "why", "block", 1000, 6}});
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/org/gnome/SessionManager/Inhibitor1", "org.gnome.Brasero", 4},
              {"/org/gnome/SessionManager/Inhibitor2", "org.gnome.Totem.desktop", 12},
              {"/org/gnome/SessionManager/Inhibitor3", "org.gnome.Evince", 8},
              {"/org/gnome/SessionManager/Inhibitor4", "org.gnome.Software", 1}});
  EXPECT_EQ(assertions(), (Lines{"6 PreventUserIdleSystemSleep 255",
                                 "org.gnome.Brasero PreventUserIdleSystemSleep 255",
                                 "org.gnome.Totem PreventUserIdleSystemSleep 255",
                                 "org.gnome.Totem PreventUserIdleDisplaySleep 255",
                                 "org.gnome.Evince PreventUserIdleDisplaySleep 255"}));
}

TEST_F(InhibitorListTest, GivesANamedHolderANegativeIdentifierThatStays) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "org.a", 4}});
  const auto first = list->assertionsByProcess();
  const auto second = list->assertionsByProcess();
  ASSERT_TRUE(first && second);
  ASSERT_EQ(first->size(), 1U);
  EXPECT_LT(first->front().process, 0);
  EXPECT_EQ(second->front().process, first->front().process);
}

TEST_F(InhibitorListTest, LeavesItsOwnEntriesOutOfTheSessionsLists) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "com.staylit.app", 4}, {"/b", "org.b", 4}});
  const auto agent = policyAgent(sessionDaemon->address(), {{"Staylit", "x"}, {"vlc", "y"}});
  EXPECT_EQ(assertions(),
            (Lines{"org.b PreventUserIdleSystemSleep 255", "vlc PreventUserIdleSystemSleep 255"}));
}

TEST_F(InhibitorListTest, LeavesOutAnotherStaylitOnEveryListWhateverItsReason) {
  const auto logind = logindListing({{"idle", "Staylit", "waiting", "block", 1001, 999'999'901},
                                     {"sleep:idle", "com.staylit.app", "", "block", 0, 999'999'902},
                                     {"idle", "staylit", "a", "block-weak", 0, 999'999'903},
                                     {"idle", "b", "Staylit", "block", 0, 999'999'904}});
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "com.staylit.app", 4},
              {"/b", "com.staylit.app.desktop", 12},
              {"/c", "Staylit", 4},
              {"/d", "org.d", 4}});
  const auto agent = policyAgent(
      sessionDaemon->address(),
      {{"Staylit", "waiting"}, {"com.staylit.app", "renamed"}, {"staylit", ""}, {"vlc", "y"}});
  EXPECT_EQ(assertions(),
            (Lines{"999999904 PreventUserIdleSystemSleep 255",
                   "org.d PreventUserIdleSystemSleep 255", "vlc PreventUserIdleSystemSleep 255"}));
}

TEST_F(InhibitorListTest, LeavesOutWhatSessionAndPowerManagersPassOn) {
  const auto logind =
      logindListing({{"sleep:idle", "alice", "user session inhibited", "block", 1001, 999'999'901},
                     {"idle", "xfce4-power-manager", "a film", "block", 1001, 999'999'902},
                     {"idle", "alice", "user session is fine", "block", 1001, 999'999'903}});
  const auto agent = policyAgent(
      sessionDaemon->address(),
      {{"alice", "user session inhibited"}, {"xfce4-power-manager", "a film"}, {"vlc", "y"}});
  EXPECT_EQ(assertions(), (Lines{"999999903 PreventUserIdleSystemSleep 255",
                                 "vlc PreventUserIdleSystemSleep 255"}));
}

/// A program that does nothing, under a name of the test's choice.
class NamedProgram {
 public:
  explicit NamedProgram(const std::string& name) {
    const std::string program = folder_.path() / name;
    std::filesystem::copy_file("/bin/sleep", program);
    program_ = ChildProgram({program, "1000"});
    const std::string command = "/proc/" + std::to_string(program_.pid()) + "/exe";
    std::error_code error;
    while (std::filesystem::read_symlink(command, error) != program)
      std::this_thread::yield();
  }
  [[nodiscard]] std::uint32_t process() const { return static_cast<std::uint32_t>(program_.pid()); }

 private:
  TemporaryFolder folder_;
  ChildProgram program_;
};

TEST_F(InhibitorListTest, RecognisesByItsProgramAStaylitThatGivesAnotherName) {
  const NamedProgram staylit("staylit");
  const NamedProgram other("staylitter");
  const auto logind = logindListing({{"idle", "Renamed", "why", "block", 0, staylit.process()},
                                     {"idle", "Other", "why", "block", 0, other.process()}});
  EXPECT_EQ(assertions(),
            Lines{std::to_string(other.process()) + " PreventUserIdleSystemSleep 255"});
}

TEST_F(InhibitorListTest, RecognisesByItsProgramAStaylitWhoseProcessWasRenamed) {
  // The program of this test stands for a Staylit that was started twice.
  const ChildProgram staylit({"unused"}, [] {
    ::prctl(PR_SET_NAME, "renamed");
    ::pause();
    return false;
  });
  const auto logind = logindListing(
      {{"idle", "Renamed", "why", "block", 0, static_cast<std::uint32_t>(staylit.pid())}});
  EXPECT_EQ(assertions(), Lines{});
}

TEST_F(InhibitorListTest, RecognisesASessionsPowerManagerByItsProgram) {
  const NamedProgram manager("xfce4-power-manager");
  const NamedProgram session("gnome-session-binary");
  const auto logind =
      logindListing({{"idle", "alice", "for another", "block", 0, manager.process()},
                     {"sleep", "alice", "for two", "block", 0, session.process()}});
  EXPECT_EQ(assertions(), Lines{});
}

TEST_F(InhibitorListTest, ListsItsOwnHoldUnderItsProcess) {
  const auto own = static_cast<std::uint32_t>(::getpid());
  const auto logind = logindListing({{"idle", "Staylit", "waiting", "block", 0, own}});
  EXPECT_EQ(assertions(), Lines{std::to_string(own) + " PreventUserIdleSystemSleep 255"});
}

TEST_F(InhibitorListTest, AsksForTheDetailsOfAnInhibitorOnce) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "org.a", 4}});
  assertions();
  EXPECT_EQ(gnome.detailCalls, 2);
  assertions();
  EXPECT_EQ(gnome.detailCalls, 2);
  gnome.list({{"/a", "org.a", 4}, {"/b", "org.b", 4}});
  EXPECT_EQ(assertions().size(), 2U);
  EXPECT_EQ(gnome.detailCalls, 4);
}

TEST_F(InhibitorListTest, AsksAgainWhenTheSessionManagerRestarted) {
  auto gnome = std::make_unique<FakeInhibitorList>(sessionDaemon->address());
  gnome->list({{"/a", "org.before", 4}});
  EXPECT_EQ(assertions(), Lines{"org.before PreventUserIdleSystemSleep 255"});
  gnome = nullptr;
  gnome = std::make_unique<FakeInhibitorList>(sessionDaemon->address());
  gnome->list({{"/a", "org.after", 4}});
  EXPECT_TRUE(eventually(
      [&] { return assertions() == Lines{"org.after PreventUserIdleSystemSleep 255"}; }));
}

TEST_F(InhibitorListTest, ReadsDetailsThatAreProperties) {
  FakeInhibitorList cinnamon(sessionDaemon->address(), FakeInhibitorList::Details::properties);
  cinnamon.list({{"/a", "org.a", 12}});
  EXPECT_EQ(assertions(), (Lines{"org.a PreventUserIdleSystemSleep 255",
                                 "org.a PreventUserIdleDisplaySleep 255"}));
}

TEST_F(InhibitorListTest, AddsWhatThePolicyAgentListsButNotWhatItTakesFromLogind) {
  const auto logind = logindListing({{"idle", "mpv", "playing", "block", 1000, 9}});
  const auto agent =
      policyAgent(sessionDaemon->address(), {{"mpv", "playing"}, {"Dolphin", "copying"}});
  EXPECT_EQ(assertions(),
            (Lines{"9 PreventUserIdleSystemSleep 255", "Dolphin PreventUserIdleSystemSleep 255"}));
}

TEST_F(InhibitorListTest, KnowsItsOwnProcess) {
  EXPECT_EQ(list->ownProcessIdentifier(), ::getpid());
}

}  // namespace
}  // namespace platform
