#include "Staylit/Desktop/Holds/HoldsReader.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/FakeInhibitorList.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using namespace platform::testing;  // NOLINT: the fixture's names
using Lines = std::vector<std::string>;
using State = HoldsReport::Activity::State;

/// A number that no process has.
constexpr std::uint32_t kNobody = 999'999'901;

/// Of KDE's power management, which is the freedesktop service as well.
const Lines kKdesNames = {"org.kde.Solid.PowerManagement.PolicyAgent",
                          "org.kde.Solid.PowerManagement", "org.freedesktop.PowerManagement"};

class HoldsReaderTest : public BusTest {
 protected:
  HoldsReport read() {
    const HoldsReader::Places places{folder.path() / "inhibit", "/nonexistent/tool"};
    return HoldsReader(*systemBus, *sessionBus, clock, places).read();
  }
  /// Each as "service owner|reason effect".
  static Lines lines(const HoldsReport& report) {
    Lines result;
    for (const HoldsReport::Hold& hold : report.holds) {
      constexpr const char* kEffects[] = {"idle", "every", "lid", "idleness"};
      result.push_back(hold.service + " " + hold.owner + "|" + hold.reason + " " +
                       kEffects[static_cast<int>(hold.effect)]);
    }
    return result;
  }

  TemporaryFolder folder;
  tidewell::FakeClock clock;
  ScopedEnvironment desktop{"XDG_CURRENT_DESKTOP", std::nullopt};
};

TEST_F(HoldsReaderTest, FindsNobodyToAskWhereThereIsNobody) {
  const HoldsReport report = read();
  EXPECT_TRUE(report.services.empty());
  EXPECT_TRUE(report.holds.empty() && report.silent.empty() && report.deciders.empty());
  EXPECT_EQ(report.canSleep, std::nullopt);
}

TEST_F(HoldsReaderTest, ListsWhatLogindHoldsOfStaylitsToo) {
  FakeLogind logind(systemDaemon->address());
  logind.list({{"idle", "Staylit", "ffmpeg is working", "block", 0, kNobody},
               {"sleep", "Staylit", "Lets go of its holds before sleep", "delay", 0, kNobody},
               {"shutdown:sleep:idle", "dpkg", "upgrading", "block", 0, kNobody},
               {"shutdown", "a", "", "block", 0, kNobody},
               {"handle-lid-switch", "Staylit", "lid", "block", 0, kNobody},
               {"handle-power-key:handle-lid-switch", "gnome", "", "block", 0, kNobody}});
  const HoldsReport report = read();
  EXPECT_EQ(report.services, Lines{"org.freedesktop.login1"});
  EXPECT_EQ(lines(report), (Lines{"org.freedesktop.login1 Staylit|ffmpeg is working idle",
                                  "org.freedesktop.login1 dpkg|upgrading every",
                                  "org.freedesktop.login1 Staylit|lid lid"}));
}

TEST_F(HoldsReaderTest, NamesTheUserAndSinceWhenItHolds) {
  FakeLogind logind(systemDaemon->address());
  logind.list(
      {{"idle", "a", "", "block", 0, kNobody}, {"idle", "b", "", "block", 54'321, kNobody}});
  folder.write("inhibit/1", "WHAT=idle\nUID=0\nPID=999999901\nWHO=a\nWHY=\n");
  folder.write("inhibit/1.ref", "");
  const HoldsReport report = read();
  ASSERT_EQ(report.holds.size(), 2U);
  EXPECT_EQ(report.holds[0].user, "root");
  EXPECT_TRUE(report.holds[0].since);
  EXPECT_EQ(report.holds[1].user, "user 54321");
  EXPECT_FALSE(report.holds[1].since);
}

TEST_F(HoldsReaderTest, SaysWhatEachOwnerDoes) {
  const ChildProgram sleeper({"sleep", "1000"});
  const ChildProgram worker({"sh", "-c", "while :; do :; done"});
  FakeLogind logind(systemDaemon->address());
  logind.list({{"idle", "a", "", "block", 0, static_cast<std::uint32_t>(sleeper.pid())},
               {"idle", "b", "", "block", 0, static_cast<std::uint32_t>(worker.pid())},
               {"idle", "c", "", "block", 0, kNobody}});
  // The clock of the test ends the watch at once, and the looks themselves take a while.
  ASSERT_TRUE(eventually([&] {
    const HoldsReport report = read();
    return report.holds.at(0).activity.state == State::quiet &&
           report.holds.at(0).program == "sleep" &&
           report.holds.at(1).activity.state == State::active &&
           report.holds.at(2).activity.state == State::gone;
  }));
}

TEST_F(HoldsReaderTest, DoesNotWatchWhoHoldsForOthers) {
  FakeLogind logind(systemDaemon->address());
  logind.list({{"sleep:idle", "alice", "user session inhibited", "block", 0, kNobody}});
  const HoldsReport report = read();
  ASSERT_EQ(report.holds.size(), 1U);
  EXPECT_EQ(report.holds.front().activity.state, State::passesOn);
}

TEST_F(HoldsReaderTest, ListsWhatTheSessionManagerHoldsWithItsReasons) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "org.gnome.Totem.desktop", 12, "Playing"},
              {"/b", "org.gnome.Evince", 8, "Presenting"},
              {"/c", "com.staylit.app", 4, "ffmpeg is working"},
              {"/d", "org.gnome.Logout", 1, ""}});
  EXPECT_EQ(lines(read()),
            (Lines{"org.gnome.SessionManager org.gnome.Totem|Playing idle",
                   "org.gnome.SessionManager org.gnome.Evince|Presenting idleness",
                   "org.gnome.SessionManager com.staylit.app|ffmpeg is working idle"}));
}

TEST_F(HoldsReaderTest, ListsMoreThanOneReadingOfTheProgramThatRunsWouldTake) {
  std::vector<FakeInhibitorList::Entry> entries;
  for (int index = 0; index < 50; ++index)
    entries.push_back({"/i" + std::to_string(index), "a", 4, "b"});
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list(entries);
  EXPECT_EQ(read().holds.size(), 50U);
}

TEST_F(HoldsReaderTest, ListsWhatKdeHoldsLessWhatItTakesFromLogind) {
  FakeLogind logind(systemDaemon->address());
  logind.list({{"idle", "mpv", "playing", "block", 0, kNobody}});
  const auto agent = policyAgent(sessionDaemon->address(),
                                 {{"mpv", "playing"}, {"Dolphin", "copying"}}, kKdesNames);
  EXPECT_EQ(lines(read()),
            (Lines{"org.freedesktop.login1 mpv|playing idle",
                   "org.kde.Solid.PowerManagement.PolicyAgent Dolphin|copying idle"}));
}

/// A Staylit that runs, in that state, and sees Totem at work.
std::unique_ptr<BusService> staylitThatSeesTotem(const std::string& address, const char* state) {
  return std::make_unique<BusService>(
      address, Lines{"com.staylit.app"}, [state](sd_bus_message* call) {
        sd_bus_reply_method_return(call, "a{sv}", 2, "State", "s", state, "Busy", "a(sssdddd)", 1,
                                   "org.gnome.Totem", "Totem", "112% CPU", 112.0, 0.0, 0.0, 185.0);
      });
}

TEST_F(HoldsReaderTest, AsksTheStaylitThatRunsWhatItSees) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "org.gnome.Totem.desktop", 4, "Playing"}, {"/b", "org.b", 4, ""}});
  const auto staylit = staylitThatSeesTotem(sessionDaemon->address(), "holding");
  const HoldsReport report = read();
  ASSERT_EQ(report.holds.size(), 2U);
  EXPECT_EQ(report.holds[0].staylitSees, "Totem — 112% CPU, for 3 min 5 s");
  EXPECT_EQ(report.holds[1].staylitSees, "");
}

TEST_F(HoldsReaderTest, DoesNotRepeatWhatAPausedStaylitSaw) {
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "org.gnome.Totem", 4, ""}});
  const auto staylit = staylitThatSeesTotem(sessionDaemon->address(), "paused");
  EXPECT_EQ(read().holds.at(0).staylitSees, "");
}

TEST_F(HoldsReaderTest, SaysWhichServicesDoNotAnswer) {
  FakeLogind logind(systemDaemon->address());
  logind.listsNonsense = true;
  FakeInhibitorList gnome(sessionDaemon->address());
  gnome.list({{"/a", "a", 4, "b"}});
  const HoldsReport report = read();
  EXPECT_EQ(report.silent, Lines{"org.freedesktop.login1"});
  EXPECT_EQ(report.holds.size(), 1U);
}

TEST_F(HoldsReaderTest, SaysWhetherTheMachineCanSleep) {
  FakeLogind logind(systemDaemon->address());
  logind.setMachine({"suspend", 900'000'000, true, "na"});
  EXPECT_EQ(read().canSleep, false);
  logind.setMachine({"suspend", 900'000'000, true, "challenge"});
  const HoldsReport report = read();
  EXPECT_EQ(report.canSleep, true);
  ASSERT_EQ(report.deciders.size(), 1U);
  EXPECT_EQ(report.deciders.front().action, HoldsReport::Decider::Action::sleeps);
}

}  // namespace
}  // namespace staylit
