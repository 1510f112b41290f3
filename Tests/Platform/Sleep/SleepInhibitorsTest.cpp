#include "Platform/Linux/Sleep/SleepInhibitors.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/SilentBus.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using namespace std::chrono_literals;

TEST_F(SleepTest, AsksGnomeToKeepTheSystemAwakeWhileTheScreenMayGoBlank) {
  const auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "Xcode is working");
  EXPECT_EQ(creation.code, 0);
  EXPECT_NE(creation.id, 0U);
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|Xcode is working|4"});
  EXPECT_EQ(gnome->targets(), Lines{"/org/gnome/SessionManager org.gnome.SessionManager"});
}

TEST_F(SleepTest, AsksGnomeToKeepTheScreenLit) {
  const auto gnome = sessionService(kGnome);
  EXPECT_EQ(create(kDisplay, "Xcode is working").code, 0);
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|Xcode is working|12"});
}

TEST_F(SleepTest, NeverGivesGnomeAnEmptyReason) {
  const auto gnome = sessionService(kGnome);
  EXPECT_EQ(create(kSystem, "").code, 0);
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|Staylit|4"});
}

TEST_F(SleepTest, AsksTheFreedesktopServiceWhenThereIsNoGnome) {
  const auto power = sessionService(kPowerManagement);
  const auto screen = sessionService(kScreenSaver);
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(power->log(), Lines{"Inhibit Staylit|a"});
  EXPECT_EQ(power->targets(), Lines{"/org/freedesktop/PowerManagement/Inhibit "
                                    "org.freedesktop.PowerManagement.Inhibit"});
  EXPECT_EQ(screen->log(), Lines{});
}

TEST_F(SleepTest, AsksTheScreenSaverAsWellToKeepTheScreenLit) {
  const auto power = sessionService(kPowerManagement);
  const auto screen = sessionService(kScreenSaver);
  EXPECT_EQ(create(kDisplay, "a").code, 0);
  EXPECT_EQ(power->log(), Lines{"Inhibit Staylit|a"});
  EXPECT_EQ(screen->log(), Lines{"Inhibit Staylit|a"});
  EXPECT_EQ(screen->targets(), Lines{"/org/freedesktop/ScreenSaver org.freedesktop.ScreenSaver"});
}

TEST_F(SleepTest, PrefersGnomeToTheFreedesktopServices) {
  const auto gnome = sessionService(kGnome);
  const auto power = sessionService(kPowerManagement);
  const auto screen = sessionService(kScreenSaver);
  EXPECT_EQ(create(kDisplay, "a").code, 0);
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|a|12"});
  EXPECT_EQ(power->log(), Lines{});
  EXPECT_EQ(screen->log(), Lines{});
}

TEST_F(SleepTest, TakesLogindsIdleLockInAdditionToGnome) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(gnome->held(), Lines{"a"});
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
}

TEST_F(SleepTest, TakesLogindsIdleLockAloneWhenNoSessionServiceDecides) {
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(create(kDisplay, "b").code, 0);
  EXPECT_EQ(logind->held(), (Lines{"idle|Staylit|a|block", "idle|Staylit|b|block"}));
}

TEST_F(SleepTest, TakesLogindsIdleLockOnXfce) {
  const auto power = sessionService(kPowerManagement);
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
}

TEST_F(SleepTest, LeavesLogindsIdleLockOutOfASystemHoldOnKde) {
  const auto solid = sessionService(kSolid);
  const auto power = sessionService(kPowerManagement);
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(power->held(), Lines{"a"});
  EXPECT_EQ(logind->granted(), Lines{});
}

TEST_F(SleepTest, TakesLogindsIdleLockForADisplayHoldOnKde) {
  const auto solid = sessionService(kSolid);
  const auto power = sessionService(kPowerManagement);
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kDisplay, "a").code, 0);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
}

TEST_F(SleepTest, GivesEverythingBackOnRelease) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return gnome->held().empty() && logind->held().empty(); }));
  EXPECT_EQ(gnome->log(), (Lines{"Inhibit com.staylit.app|a|4", "Uninhibit 1"}));
}

TEST_F(SleepTest, GivesEverythingBackWhenItIsDestroyed) {
  const auto power = sessionService(kPowerManagement);
  const auto logind = fakeLogind();
  create(kSystem, "a");
  inhibitors.reset();
  EXPECT_TRUE(eventually([&] { return power->held().empty() && logind->held().empty(); }));
  EXPECT_EQ(power->log(), (Lines{"Inhibit Staylit|a", "UnInhibit 1"}));
}

TEST_F(SleepTest, ReleasesOnlyTheGivenAssertion) {
  const auto gnome = sessionService(kGnome);
  const auto first = create(kSystem, "a");
  const auto second = create(kDisplay, "b");
  EXPECT_NE(first.id, second.id);
  inhibitors->releaseAssertion(first.id);
  inhibitors->releaseAssertion(first.id);
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"b"}; }));
  runBriefly(*loop);
  EXPECT_EQ(gnome->held(), Lines{"b"});
}

TEST_F(SleepTest, TakesTheNewNameBeforeItDropsTheOldOne) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"b"}; }));
  EXPECT_EQ(gnome->log(),
            (Lines{"Inhibit com.staylit.app|a|4", "Inhibit com.staylit.app|b|4", "Uninhibit 1"}));
  EXPECT_FALSE(gnome->hadAGap());
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|b|block"});
}

TEST_F(SleepTest, KeepsTheOldNameWhenTheNewOneIsRefused) {
  const auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "a");
  gnome->refuses = true;
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  runBriefly(*loop);
  EXPECT_EQ(gnome->held(), Lines{"a"});
}

TEST_F(SleepTest, ReturnsTheNegativeErrnoOfARefusal) {
  const auto gnome = sessionService(kGnome);
  gnome->refuses = true;
  const auto creation = create(kSystem, "a");
  EXPECT_EQ(creation.code, -EACCES);
  EXPECT_EQ(creation.id, 0U);
}

TEST_F(SleepTest, SucceedsWhenAtLeastOneServiceAgrees) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  gnome->refuses = true;
  const auto creation = create(kSystem, "a");
  EXPECT_EQ(creation.code, 0);
  EXPECT_NE(creation.id, 0U);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
}

TEST_F(SleepTest, SendsOnlyValidText) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "caf\xC3\xA9 \xFF\xC3(").code, 0);
  EXPECT_EQ(gnome->held(), Lines{"caf\xC3\xA9 \xEF\xBF\xBD\xEF\xBF\xBD("});
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|caf\xC3\xA9 \xEF\xBF\xBD\xEF\xBF\xBD(|block"});
}

TEST_F(SleepTest, AsksARestartedSessionManagerAgain) {
  auto gnome = sessionService(kGnome);
  create(kSystem, "a");
  const auto renamed = create(kDisplay, "b");
  now += kPause;
  inhibitors->setAssertionName(renamed.id, "c");
  gnome.reset();
  gnome = sessionService(kGnome);
  EXPECT_TRUE(eventually([&] { return gnome->held() == (Lines{"a", "c"}); }));
  EXPECT_EQ(gnome->log(), (Lines{"Inhibit com.staylit.app|a|4", "Inhibit com.staylit.app|c|12"}));
}

TEST_F(SleepTest, NeverGivesASuccessorBackTheGrantOfItsPredecessor) {
  auto power = sessionService(kPowerManagement);
  const auto creation = create(kSystem, "a");
  power.reset();
  power = sessionService(kPowerManagement);
  power->refuses = true;
  inhibitors->releaseAssertion(creation.id);
  runBriefly(*loop);
  EXPECT_EQ(power->log(), Lines{});
}

TEST_F(SleepTest, TakesItsLocksAgainWhenLogindRestarted) {
  auto logind = fakeLogind();
  create(kSystem, "a");
  logind.reset();
  logind = fakeLogind();
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|a|block"}; }));
}

TEST_F(SleepTest, TakesEverythingAgainWhenTheBusCameBack) {
  auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "a");
  sessionDaemon->stop();
  gnome.reset();
  sessionDaemon->start();
  gnome = sessionService(kGnome);
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"a"}; }));
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return gnome->held().empty(); }));
}

TEST_F(SleepTest, UsesABetterSessionManagerThatAppearsLater) {
  const auto power = sessionService(kPowerManagement);
  create(kSystem, "a");
  EXPECT_EQ(power->held(), Lines{"a"});
  const auto gnome = sessionService(kGnome);
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"a"} && power->held().empty(); }));
}

TEST_F(SleepTest, FallsBackToTheOtherServiceWhenTheBetterOneLeft) {
  const auto power = sessionService(kPowerManagement);
  auto gnome = sessionService(kGnome);
  create(kSystem, "a");
  EXPECT_EQ(power->held(), Lines{});
  gnome.reset();
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"a"}; }));
}

TEST_F(SleepTest, OnlyRecordsWhenThereIsNobodyToAsk) {
  const auto creation = create(kSystem, "a");
  EXPECT_EQ(creation.code, 0);
  EXPECT_NE(creation.id, 0U);
  EXPECT_EQ(create(kDisplay, "b").code, 0);
  inhibitors->setAssertionName(creation.id, "c");
  EXPECT_EQ(ports.log.lines(), Lines{"info: no sleep service here: holds are recorded only"});
}

TEST_F(SleepTest, OnlyRecordsWhenThereIsNoBus) {
  const ScopedEnvironment noSystem("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  const ScopedEnvironment noSession("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(ports.log.lines(), Lines{"info: no sleep service here: holds are recorded only"});
}

TEST_F(SleepTest, HoldsARecordedAssertionWhenAServiceAppears) {
  const auto creation = create(kSystem, "a");
  inhibitors->setAssertionName(creation.id, "b");
  const auto logind = fakeLogind();
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|b|block"}; }));
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
}

TEST_F(SleepTest, HoldsARecordedAssertionWhenTheBusAppears) {
  systemDaemon->stop();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  systemDaemon->start();
  const auto logind = fakeLogind();
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|a|block"}; }));
}

TEST_F(SleepTest, FailsWhenTheOnlyServiceDoesNotAnswer) {
  const auto gnome = sessionService(kGnome);
  gnome->isSilent = true;
  const auto creation = create(kSystem, "a");
  EXPECT_EQ(creation.code, -ETIMEDOUT);
  EXPECT_EQ(creation.id, 0U);
}

TEST_F(SleepTest, GivesBackAGrantThatComesTooLateForAFailedHold) {
  const auto gnome = sessionService(kGnome);
  gnome->isSilent = true;
  ASSERT_EQ(create(kSystem, "a").code, -ETIMEDOUT);
  now += 5s;
  gnome->answerLate();
  EXPECT_TRUE(eventually([&] { return gnome->log().size() == 2 && gnome->held().empty(); }));
}

TEST_F(SleepTest, AHoldThatIsTriedAgainGetsWhatWasGrantedTooLate) {
  const auto logind = fakeLogind();
  logind->isSilent = true;
  ASSERT_EQ(create(kSystem, "a").code, -ETIMEDOUT);
  now += 2s;
  EXPECT_EQ(create(kSystem, "a").code, -ETIMEDOUT);
  EXPECT_EQ(logind->waiting(), 1U) << "logind is not asked twice";
  logind->answerLate();
  ASSERT_TRUE(eventually([&] { return logind->granted().size() == 1; }));
  runBriefly(*loop);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
  now += 2s;
  const auto creation = create(kSystem, "b");
  EXPECT_EQ(creation.code, 0);
  EXPECT_TRUE(inhibitors->isGranted());
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"}) << "the new name comes a little later";
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
}

TEST_F(SleepTest, AHoldOfAnotherKindDoesNotGetWhatWasGrantedTooLate) {
  const auto gnome = sessionService(kGnome);
  gnome->isSilent = true;
  ASSERT_EQ(create(kDisplay, "a").code, -ETIMEDOUT);
  gnome->answerLate();
  runBriefly(*loop);
  EXPECT_EQ(create(kSystem, "b").code, 0);
  EXPECT_EQ(gnome->log(), (Lines{"Inhibit com.staylit.app|a|12", "Inhibit com.staylit.app|b|4"}));
}

TEST_F(SleepTest, KeepsALateGrantForALiveHold) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  gnome->isSilent = true;
  const auto creation = create(kSystem, "a");
  ASSERT_EQ(creation.code, 0);
  gnome->answerLate();
  runBriefly(*loop);
  EXPECT_EQ(gnome->held(), Lines{"a"});
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return gnome->held().empty() && logind->held().empty(); }));
}

TEST_F(SleepTest, GivesBackALockThatLogindGrantsTooLate) {
  const auto logind = fakeLogind();
  logind->isSilent = true;
  ASSERT_EQ(create(kSystem, "a").code, -ETIMEDOUT);
  now += 5s;
  logind->answerLate();
  EXPECT_TRUE(eventually([&] { return logind->granted().size() == 1 && logind->held().empty(); }));
}

TEST_F(SleepTest, HoldsEvenIfTheSessionBusIsSilent) {
  SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address());
  const auto logind = fakeLogind();
  EXPECT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
  EXPECT_EQ(silent.connectionsMade(), 1);
}

TEST_F(SleepTest, FailsWhenBothBusesAreSilent) {
  SilentBus silent;
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", silent.address());
  const ScopedEnvironment system("DBUS_SYSTEM_BUS_ADDRESS", silent.address());
  EXPECT_EQ(create(kSystem, "a").code, -ETIMEDOUT);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(SleepTest, IsGrantedAsLongAsSomeServiceHasEverySystemHold) {
  EXPECT_TRUE(inhibitors->isGranted()) << "nothing is asked for";
  auto gnome = sessionService(kGnome);
  create(kSystem, "a");
  EXPECT_TRUE(inhibitors->isGranted());
  gnome.reset();
  EXPECT_TRUE(eventually([&] { return !inhibitors->isGranted(); }));
  gnome = sessionService(kGnome);
  EXPECT_TRUE(eventually([&] { return inhibitors->isGranted(); }));
}

TEST_F(SleepTest, SaysWhyNothingIsGranted) {
  EXPECT_TRUE(create(kSystem, "recorded").code == 0);
  EXPECT_EQ(inhibitors->whyNotGranted(),
            "neither a login service nor a desktop's power service is here");
  const auto gnome = sessionService(kGnome);
  EXPECT_TRUE(eventually([&] { return inhibitors->whyNotGranted().empty(); }));
}

TEST_F(SleepTest, SaysThatTheServiceRefuses) {
  const auto gnome = sessionService(kGnome);
  gnome->refuses = true;
  create(kSystem, "a");
  EXPECT_EQ(inhibitors->whyNotGranted(),
            "the service that would have to grant it refuses; without polkit the login service "
            "grants it to root alone");
}

TEST_F(SleepTest, IsNotGrantedWhileItIsOnlyRecorded) {
  const auto creation = create(kSystem, "a");
  EXPECT_FALSE(inhibitors->isGranted());
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(inhibitors->isGranted());
}

}  // namespace
}  // namespace platform
