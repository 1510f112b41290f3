#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "Tests/EndToEnd/Machine.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Shell/Support/FakeWatcher.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit::testing {
namespace {

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

TEST_F(StatusItemTest, IsPausedByASecondStartWhichEndsAtOnce) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  const ChildProgram second = start({"--pause"});
  EXPECT_EQ(wait(second), 0);
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_EQ(watcher->items().size(), 1U);
}

TEST_F(StatusItemTest, StaysWhenASecondStartAsksForAWindowThatCannotBeShown) {
  const ChildProgram staylit = start();
  showItem();
  ASSERT_TRUE(host);
  EXPECT_EQ(wait(start()), 0);
  EXPECT_EQ(wait(start({"--settings"})), 0);
  EXPECT_EQ(host->itemProperty("Title"), "'Staylit'");
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
  EXPECT_EQ(wait(staylit), 0);
  EXPECT_EQ(wait(start({"--quit"})), 0) << "nothing runs";
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
  // The program obeys this after all that the second start asked for.
  EXPECT_EQ(host->event(host->idOf("Pause"), "clicked"), "");
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_EQ(notified, 0);
  EXPECT_EQ(wait(start()), 0);
  EXPECT_TRUE(eventually([&] { return notified == 1; }, 20s));
}

TEST_F(StatusItemTest, TheProgramTellsItsVersionWithoutABus) {
  sessionDaemon->stop();
  EXPECT_EQ(wait(start({"--version"})), 0);
  EXPECT_TRUE(output().starts_with("Staylit "));
}

TEST_F(StatusItemTest, AFirstStartWithPauseBeginsPaused) {
  const ChildProgram staylit = start({"--pause"});
  showItem();
  ASSERT_TRUE(host);
  EXPECT_TRUE(shows("staylit-pause-circle-symbolic"));
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 20s));
}

}  // namespace
}  // namespace staylit::testing
