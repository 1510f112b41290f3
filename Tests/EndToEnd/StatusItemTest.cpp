#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "Tests/EndToEnd/Machine.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/MadeUpLocale.h"
#include "Tests/Shell/Support/FakeWatcher.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit::testing {
namespace {

using platform::testing::MadeUpLocale;

using namespace std::chrono_literals;

/// The real program with a desktop's list of status items beside it.
class StatusItemTest : public Machine {
 protected:
  void SetUp() override {
    Machine::SetUp();
    if (IsSkipped()) return;
    // Whatever display the machine has, the tests open no window on it.
    noDisplay_.emplace("DISPLAY", std::nullopt);
    noWayland_.emplace("WAYLAND_DISPLAY", std::nullopt);
    watcher.emplace(sessionDaemon->address());
  }
  /// Waits until the program has registered its item, and connects a panel to it.
  void showItem() {
    ASSERT_TRUE(eventually([this] { return !watcher->items().empty(); }, 20s));
    host.emplace(loop_, watcher->items().back());
  }
  bool shows(const std::string& icon) {
    return eventually([&] { return host->itemProperty("IconName") == "'" + icon + "'"; }, 20s);
  }

  std::optional<FakeWatcher> watcher;
  std::optional<Host> host;

 private:
  std::optional<ScopedEnvironment> noDisplay_;
  std::optional<ScopedEnvironment> noWayland_;
  platform::EventLoop loop_;
};

TEST_F(StatusItemTest, ShowsTheStatusAndObeysClicks) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  EXPECT_TRUE(shows("staylit-cup-and-saucer-fill-symbolic"));
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));

  EXPECT_EQ(host->event(host->idOf("Pause"), "clicked"), "");
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] 'Paused' '')");
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 20s));
  EXPECT_NE(host->idOf("Resume"), -1);

  EXPECT_EQ(host->event(host->idOf("Quit Staylit"), "clicked"), "");
  EXPECT_EQ(wait(staylit), 0);
}

TEST_F(StatusItemTest, ComesBackWithARestartedPanel) {
  const ChildProgram staylit = start();
  showItem();
  watcher.reset();
  watcher.emplace(sessionDaemon->address());
  EXPECT_TRUE(eventually([this] { return watcher->items().size() == 1; }, 20s));
}

TEST_F(StatusItemTest, OutlivesItsSessionBusAndReturnsToTheNextOne) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  host.reset();
  watcher.reset();
  sessionDaemon->stop();
  EXPECT_FALSE(holdReason().empty());
  sessionDaemon->start();
  watcher.emplace(sessionDaemon->address());
  showItem();
  EXPECT_EQ(host->itemProperty("Title"), "'Staylit'");
}

TEST_F(StatusItemTest, IsPausedByASecondStartWhichSaysSoAndEnds) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(wait(start({"--pause"})), 0);
    EXPECT_EQ(output(), "Paused\n");
    EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  }
  EXPECT_EQ(watcher->items().size(), 1U);
  EXPECT_EQ(wait(start({"--resume"})), 0);
  EXPECT_EQ(output(), "Resumed\n");
  EXPECT_TRUE(shows("staylit-cup-and-saucer-fill-symbolic"));
  EXPECT_EQ(wait(start({"--resume"})), 0);
  EXPECT_EQ(output(), "It was not paused\n");
  EXPECT_EQ(wait(start({"--toggle-pause"})), 0);
  EXPECT_EQ(output(), "Paused\n");
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
}

TEST_F(StatusItemTest, ResumesByItselfAfterAPauseWithALength) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  EXPECT_EQ(wait(start({"--pause", "10s"})), 0);
  EXPECT_TRUE(output().starts_with("Paused until ")) << output();
  EXPECT_EQ(wait(start({"--status"})), 1);
  EXPECT_NE(output().find("\nUntil:      "), std::string::npos) << output();
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_TRUE(shows("staylit-cup-and-saucer-fill-symbolic"));
}

TEST_F(StatusItemTest, NothingIsStartedByACommandForOneThatDoesNotRun) {
  for (const char* command : {"--pause", "--resume", "--toggle-pause", "--quit"}) {
    EXPECT_EQ(wait(start({command})), 3) << command;
    EXPECT_EQ(output(), "") << command;
    EXPECT_EQ(output("err"), "staylit: Staylit does not run\n") << command;
  }
  EXPECT_TRUE(watcher->items().empty());
}

TEST_F(StatusItemTest, ALauncherWithoutATerminalIsToldThatNoneRuns) {
  std::atomic<int> notified = 0;
  const platform::testing::BusService notifications(sessionDaemon->address(),
                                                    {"org.freedesktop.Notifications"},
                                                    [&notified](sd_bus_message*) { ++notified; });
  EXPECT_EQ(wait(start({"--toggle-pause"})), 3);
  EXPECT_TRUE(eventually([&] { return notified == 1; }, 20s));
}

TEST_F(StatusItemTest, NothingIsStartedByATypingError) {
  EXPECT_EQ(wait(start({"status"})), 2);
  EXPECT_TRUE(output("err").starts_with("staylit: there is no option 'status'; --status may be "))
      << output("err");
  EXPECT_EQ(wait(start({"-h"})), 0);
  EXPECT_TRUE(output().starts_with("Usage: staylit "));
}

TEST_F(StatusItemTest, WhatIsAlmostTheReportStartsTheProgramAndSaysSo) {
  const ChildProgram staylit = start({"--Diagnose"});
  showItem();
  EXPECT_TRUE(
      output("err").starts_with("staylit: '--Diagnose' is not --diagnose, so Staylit starts\n"))
      << output("err");
}

TEST_F(StatusItemTest, StaysWhenASecondStartAsksForAWindowThatCannotBeShown) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  const std::string why = "staylit: Staylit cannot show a window: there is no display\n";
  EXPECT_EQ(wait(start()), 1);
  EXPECT_TRUE(output("err").ends_with(why)) << output("err");
  EXPECT_EQ(wait(start({"--settings"})), 1);
  EXPECT_TRUE(output("err").ends_with(why)) << output("err");
  EXPECT_EQ(host->itemProperty("Title"), "'Staylit'");
}

TEST_F(StatusItemTest, DoesNotStartForAWindowThatCannotBeShown) {
  for (const char* window : {"--settings", "--choose-apps"}) {
    EXPECT_EQ(wait(start({window})), 1) << window;
    EXPECT_TRUE(
        output("err").ends_with("staylit: Staylit cannot show a window: there is no display\n"))
        << output("err");
  }
}

TEST_F(StatusItemTest, TheDiagnosticsReportRunsBesideIt) {
  const ChildProgram staylit = start();
  showItem();
  EXPECT_EQ(wait(start({"--diagnose", "--pause"})), 0);
  EXPECT_FALSE(output().empty());
  EXPECT_TRUE(shows("staylit-cup-and-saucer-fill-symbolic"));
}

TEST_F(StatusItemTest, ASecondStartWithQuitEndsTheProgram) {
  const ChildProgram staylit = start();
  showItem();
  EXPECT_EQ(wait(start({"--quit"})), 0);
  EXPECT_EQ(output(), "Staylit has ended\n");
  // It has ended, so that the next one can start at once.
  EXPECT_TRUE(hasEnded(staylit, 0s));
  EXPECT_EQ(wait(staylit), 0);
}

TEST_F(StatusItemTest, IsLeftAloneByASecondStartInTheBackground) {
  // Without a display, a window that is asked for becomes a notification.
  std::atomic<int> notified = 0;
  const platform::testing::BusService notifications(sessionDaemon->address(),
                                                    {"org.freedesktop.Notifications"},
                                                    [&notified](sd_bus_message*) { ++notified; });
  const ChildProgram staylit = start({"--background"});
  showItem();
  ASSERT_TRUE(host);
  EXPECT_EQ(wait(start({"--background"})), 0);
  EXPECT_EQ(output(), "Staylit runs already\n");
  // The program obeys this after all that the second start asked for.
  EXPECT_EQ(host->event(host->idOf("Pause"), "clicked"), "");
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_EQ(notified, 0);
  EXPECT_EQ(wait(start()), 1) << "there is no display";
  EXPECT_TRUE(eventually([&] { return notified == 1; }, 20s));
}

TEST_F(StatusItemTest, TheProgramTellsItsVersionWithoutABus) {
  sessionDaemon->stop();
  EXPECT_EQ(wait(start({"--version"})), 0);
  EXPECT_TRUE(output().starts_with("Staylit "));
}

TEST_F(StatusItemTest, ThereIsOneForAUserAlsoWithoutASessionBus) {
  const std::string reach = ", out of reach of this session bus\n";
  const ChildProgram staylit = start();
  showItem();
  const std::string process = "process " + std::to_string(staylit.pid());
  const ScopedEnvironment none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  EXPECT_EQ(wait(start()), 1);
  EXPECT_EQ(output("err"), "staylit: Staylit runs already as " + process + reach);
  EXPECT_EQ(wait(start({"--background"})), 0);
  EXPECT_EQ(output(), "Staylit runs already as " + process + reach);
  EXPECT_EQ(wait(start({"--quit"})), 2);
  EXPECT_TRUE(output("err").starts_with("staylit: one runs as " + process + ", but there is no "))
      << output("err");
  EXPECT_EQ(wait(start({"--status"})), 2);
  EXPECT_TRUE(output("err").starts_with("staylit: one runs as " + process)) << output("err");
  EXPECT_EQ(holdReasons().size(), 1U);
}

TEST_F(StatusItemTest, TheOneWithoutASessionBusMayComeFirst) {
  std::optional<ScopedEnvironment> none;
  none.emplace("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  none.reset();
  EXPECT_EQ(wait(start({"--background"})), 0);
  EXPECT_EQ(wait(start({"--pause"})), 2);
  EXPECT_EQ(output("err"), "staylit: one runs as process " + std::to_string(staylit.pid()) +
                               ", but not on this session bus; kill " +
                               std::to_string(staylit.pid()) + " ends it in order\n");
  EXPECT_EQ(holdReasons().size(), 1U);
}

TEST_F(StatusItemTest, SpeaksTheLanguageOfTheUserAndTheSourceToProgramsAndTerminals) {
  if (const auto obstacle = MadeUpLocale::obstacle()) GTEST_SKIP() << *obstacle;
  const MadeUpLocale locale("de_DE.UTF-8");
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  EXPECT_NE(host->idOf("Staylit beenden"), -1) << host->layout();
  EXPECT_EQ(host->idOf("Quit Staylit"), -1);
  EXPECT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(holdReason(), "waiting for work to resume");
  EXPECT_EQ(wait(start({"--status"})), 0);
  EXPECT_TRUE(output().starts_with("Work stopped — releasing in ")) << output();
  EXPECT_EQ(wait(start({"--status", "--json"})), 0);
  EXPECT_NE(output().find("\"reason\":\"waiting for work to resume\""), std::string::npos)
      << output();
}

TEST_F(StatusItemTest, AKilledOneLeavesNoLock) {
  {
    ChildProgram staylit = start();
    showItem();
    staylit.kill();
  }
  const ChildProgram next = start();
  EXPECT_TRUE(eventually([this] { return watcher->items().size() == 1; }, 20s));
  EXPECT_TRUE(eventually([this] { return holdReasons().size() == 1; }, 20s));
}

}  // namespace
}  // namespace staylit::testing
