#include "Staylit/Desktop/Doctor/Examination.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "Staylit/Desktop/Session/UserLock.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/FakeSessionService.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using namespace platform::testing;  // NOLINT: the fixture's names
using Lines = std::vector<std::string>;

class ExaminationTest : public BusTest {
 protected:
  DoctorFacts examine() {
    platform::Buses buses(*loop);
    const HoldsReader::Places places{folder.path() / "inhibit", "/nonexistent/tool"};
    return Examination(*loop, buses, clock, places).run();
  }
  /// Each trial as "service listing".
  static Lines trials(const DoctorFacts& facts) {
    constexpr const char* kWords[] = {"listed", "not listed", "no list", "refused"};
    Lines result;
    for (const DoctorFacts::Trial& trial : facts.trials)
      result.push_back(trial.service + " " + kWords[static_cast<int>(trial.listing)]);
    return result;
  }

  TemporaryFolder folder;
  tidewell::FakeClock clock;
  ScopedEnvironment settings{"XDG_CONFIG_HOME", folder.path().string()};
  ScopedEnvironment x11{"DISPLAY", std::nullopt};
  ScopedEnvironment wayland{"WAYLAND_DISPLAY", std::nullopt};
  ScopedEnvironment desktop{"XDG_CURRENT_DESKTOP", std::nullopt};
};

TEST_F(ExaminationTest, TriesNothingWhereThereIsNobodyToAsk) {
  const DoctorFacts facts = examine();
  EXPECT_TRUE(facts.trials.empty());
  EXPECT_EQ(facts.trialError, 0);
  EXPECT_FALSE(facts.hasLogind || facts.hasPolkit || facts.isRunning);
  EXPECT_EQ(facts.tray, DoctorFacts::Tray::noDisplay);
}

TEST_F(ExaminationTest, FindsItsHoldOnTheListsAndGivesItBack) {
  FakeLogind logind(systemDaemon->address());
  FakeSessionService gnome(sessionDaemon->address(), "org.gnome.SessionManager");
  EXPECT_EQ(trials(examine()),
            (Lines{"org.gnome.SessionManager listed", "org.freedesktop.login1 listed"}));
  EXPECT_EQ(logind.granted(), Lines{"idle|Staylit|staylit --doctor tries a hold|block"});
  EXPECT_TRUE(eventually([&] { return logind.held().empty() && gnome.held().empty(); }));
}

TEST_F(ExaminationTest, SeesThatAServiceDoesNotListWhatItGrants) {
  FakeLogind logind(systemDaemon->address());
  logind.listsNoLocks = true;
  EXPECT_EQ(trials(examine()), Lines{"org.freedesktop.login1 not listed"});
}

TEST_F(ExaminationTest, DoesNotTakeTheHoldOfAnotherStaylitForItsOwn) {
  FakeLogind logind(systemDaemon->address());
  logind.list({{"idle", "Staylit", "ffmpeg is working", "block", 0, 1},
               {"idle", "Staylit", "staylit --doctor tries a hold", "block", 0, 1}});
  logind.listsNoLocks = true;
  EXPECT_EQ(trials(examine()), Lines{"org.freedesktop.login1 not listed"});
}

TEST_F(ExaminationTest, SeesWhoRefuses) {
  FakeLogind logind(systemDaemon->address());
  logind.refuses = true;
  DoctorFacts facts = examine();
  EXPECT_EQ(trials(facts), Lines{"org.freedesktop.login1 refused"});
  EXPECT_EQ(facts.trialError, -EACCES);
  EXPECT_TRUE(facts.hasLogind);
  FakeSessionService gnome(sessionDaemon->address(), "org.gnome.SessionManager");
  facts = examine();
  EXPECT_EQ(trials(facts),
            (Lines{"org.gnome.SessionManager listed", "org.freedesktop.login1 refused"}));
  EXPECT_EQ(facts.trialError, 0);
}

TEST_F(ExaminationTest, WantsNoListOfAServiceThatHasNone) {
  FakeSessionService power(sessionDaemon->address(), "org.freedesktop.PowerManagement");
  EXPECT_EQ(trials(examine()), Lines{"org.freedesktop.PowerManagement no list"});
  EXPECT_TRUE(eventually([&] { return power.held().empty(); }));
}

TEST_F(ExaminationTest, FindsPolkitThatOnlyStartsWhenItIsAsked) {
  systemDaemon->offer("org.freedesktop.PolicyKit1", "/bin/false");
  systemDaemon->stop();
  systemDaemon->start();
  EXPECT_TRUE(examine().hasPolkit);
}

TEST_F(ExaminationTest, LooksForAPanelWhereThereIsADisplay) {
  const ScopedEnvironment display("DISPLAY", ":77");
  EXPECT_EQ(examine().tray, DoctorFacts::Tray::noWatcher);
  for (const bool hasPanel : {false, true}) {
    const BusService watcher(sessionDaemon->address(), {"org.kde.StatusNotifierWatcher"},
                             [hasPanel](sd_bus_message* call) {
                               sd_bus_reply_method_return(call, "a{sv}", 1,
                                                          "IsStatusNotifierHostRegistered", "b",
                                                          hasPanel ? 1 : 0);
                             });
    EXPECT_EQ(examine().tray, hasPanel ? DoctorFacts::Tray::ready : DoctorFacts::Tray::noPanel);
  }
}

TEST_F(ExaminationTest, ReadsTheSettingsAndChangesNothing) {
  folder.write("staylit/settings.toml", "graceSeconds = \"60\"\n[other]\n");
  const DoctorFacts facts = examine();
  ASSERT_EQ(facts.settingsProblems.size(), 2U);
  EXPECT_EQ(facts.settingsProblems[0].line, 1U);
  EXPECT_EQ(facts.settingsProblems[0].text, "\"graceSeconds\" wants a number; 60 counts");
  EXPECT_EQ(facts.settingsProblems[1].line, 2U);
  folder.write("staylit/settings.toml", "");
  EXPECT_TRUE(examine().settingsProblems.empty());
}

TEST_F(ExaminationTest, ReadsTheSettingsOfTheProgramThatServesTheMachine) {
  folder.write("machine.toml", "\nsustainSeconds = \"x\"\n");
  platform::Buses buses(*loop);
  const DoctorFacts facts =
      Examination(*loop, buses, clock, {}, folder.path() / "machine.toml").run();
  ASSERT_EQ(facts.settingsProblems.size(), 1U);
  EXPECT_EQ(facts.settingsProblems[0].line, 2U);
  EXPECT_EQ(facts.settingsProblems[0].file, folder.path("machine.toml"));
}

TEST_F(ExaminationTest, SeesOneThatRunsOutOfReach) {
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.path("run"));
  std::filesystem::create_directories(folder.path() / "run");
  std::filesystem::permissions(folder.path() / "run", std::filesystem::perms::owner_all);
  EXPECT_EQ(examine().outOfReach, "");
  UserLock lock;
  ASSERT_EQ(lock.take(), UserLock::Outcome::taken);
  EXPECT_TRUE(examine().outOfReach.starts_with("one runs as process "));
}

TEST_F(ExaminationTest, SaysWhyTheSettingsCannotBeRead) {
  folder.write("staylit/settings.toml/file", "");
  EXPECT_FALSE(examine().settingsError.empty());
}

}  // namespace
}  // namespace staylit
