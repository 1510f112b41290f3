#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/MenuBarController.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit {
namespace {

using testing::Host;

struct Look {
  const char* name;
  EngineStatus status;
  bool isPaused;
  const char* icon;
  const char* text;
  const char* pauseItem;
};

void PrintTo(const Look& look, std::ostream* stream) {
  *stream << look.name;
}

/// The whole shell of a real engine, except its windows.
class MenuOfEngine : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    // The item does not connect the bus by itself.
    ASSERT_EQ(sessionBus->connect(), 0);
    // The icons count as installed.
    dataFolders.emplace("XDG_DATA_DIRS",
                        std::filesystem::path(STAYLIT_ICONS).parent_path().string());
    userInterface.emplace(*loop, *sessionBus);
    engine.emplace(fakes.ports);
    controller.emplace(*engine, *userInterface, fakes.ports);
    const char* name = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(sessionBus->handle(), &name), 0);
    host.emplace(*loop, name);
  }
  void TearDown() override {
    host.reset();
    controller.reset();
    engine.reset();
    userInterface.reset();
  }

  tidewell::FakePorts fakes;
  std::optional<platform::testing::ScopedEnvironment> dataFolders;
  std::optional<DesktopUserInterface> userInterface;
  std::optional<StaylitEngine> engine;
  std::optional<MenuBarController> controller;
  std::optional<Host> host;
};

class StatusItemOfEngine : public MenuOfEngine, public ::testing::WithParamInterface<Look> {};

TEST_P(StatusItemOfEngine, ShowsTheStatus) {
  const Look& look = GetParam();
  if (look.isPaused) engine->setPaused(true);
  engine->status().set(look.status);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(host->itemProperty("IconName"), "'" + std::string(look.icon) + "'");
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] '" + std::string(look.text) + "' '')");
  EXPECT_EQ(host->itemProperty("IconAccessibleDesc"), "'Staylit'");
  EXPECT_EQ(host->layout(),
            "1 (0 ['children-display' 'submenu'] "
            "[(1 ['label' '" +
                std::string(look.text) +
                "' 'enabled' false] []) "
                "(2 ['type' 'separator'] []) "
                "(3 ['label' '" +
                std::string(look.pauseItem) +
                "' 'shortcut' [['Control' 'p']]] []) "
                "(4 ['label' 'Choose Apps…' 'accessible-desc' 'Choose Apps… — Pick which apps "
                "may keep your Mac awake' 'shortcut' [['Control' 'a']]] []) "
                "(5 ['label' 'Settings…' 'shortcut' [['Control' 'comma']]] []) "
                "(6 ['type' 'separator'] []) "
                "(7 ['label' 'Quit Staylit' 'shortcut' [['Control' 'q']]] [])])");
}

INSTANTIATE_TEST_SUITE_P(
    EachState, StatusItemOfEngine,
    ::testing::Values(
        Look{"holding", EngineStatus::holding({"Xcode", "Aider", "Codex"}), false,
             "staylit-cup-and-saucer-fill-symbolic", "Awake for Xcode +2 more", "Pause"},
        Look{"winding", EngineStatus::winding(45), false, "staylit-cup-and-saucer-fill-symbolic",
             "Work stopped — releasing in 45s", "Pause"},
        Look{"blocked", EngineStatus::blocked("on battery"), false,
             "staylit-cup-and-saucer-dimmed-symbolic", "Not holding — on battery", "Pause"},
        Look{"idle", EngineStatus::idle(), false, "staylit-cup-and-saucer-dimmed-symbolic",
             "Idle — your Mac can sleep", "Pause"},
        Look{"paused", EngineStatus::paused(), true, "staylit-pause-circle-symbolic", "Paused",
             "Resume"}),
    [](const auto& test) { return test.param.name; });

TEST_F(MenuOfEngine, ShowsBusyAndIgnoredAndAskingApplications) {
  tidewell::BusyApp aider;
  aider.id = "aider";
  aider.display = "Aider";
  aider.cpuPercent = 50;
  engine->busyApps().set({aider});
  engine->assertingApps().set({"my_player"});
  fakes.defaults.setStringList("ignoredApps", {"unknown_tool"});
  EXPECT_EQ(host->layout(0, -1, {"label", "toggle-state"}),
            "1 (0 [] [(1 ['label' 'Idle — your Mac can sleep'] []) (2 [] []) "
            "(3 ['label' 'Staying awake for'] []) "
            "(4 ['label' 'Aider — 50% CPU' 'toggle-state' 1] []) (5 [] []) "
            "(6 ['label' 'Not watching'] []) "
            "(7 ['label' 'unknown__tool' 'toggle-state' 0] []) (8 [] []) "
            "(9 ['label' 'Asked to stay awake'] []) (10 ['label' '  my__player'] []) (11 [] []) "
            "(12 ['label' 'Pause'] []) (13 ['label' 'Choose Apps…'] []) "
            "(14 ['label' 'Settings…'] []) (15 [] []) (16 ['label' 'Quit Staylit'] [])])");
}

TEST_F(MenuOfEngine, ObeysAClickAndShowsItWhileTheMenuIsOpen) {
  host->listenToMenu();
  const std::int32_t pause = host->idOf("Pause");
  host->event(0, "opened");
  host->event(pause, "clicked");
  EXPECT_TRUE(eventually([this] { return engine->isPaused(); }));
  EXPECT_TRUE(eventually([&] {
    return !host->signals.empty() &&
           host->signals.back().find("'label' 'Resume'") != std::string::npos;
  }));
}

TEST_F(MenuOfEngine, SendsFewMessagesInAnHourOfWorkWhileTheMenuIsClosed) {
  using namespace std::chrono_literals;
  fakes.defaults.setInteger("sustainSeconds", 10);
  const std::vector<std::string> names = {"aider", "ffmpeg", "make"};
  for (std::int32_t pid = 1; pid <= 3; ++pid)
    fakes.processes.add(100 + pid, "/opt/" + names[static_cast<std::size_t>(pid - 1)]);
  host->layout();
  host->listenToMenu();
  std::mt19937 figures(7);
  // "make" works from the tenth to the twentieth minute, the others all the time, and each tick
  // finds other figures and often another order.
  for (int tick = 0; tick < 1800; ++tick) {
    for (std::int32_t pid = 1; pid <= 3; ++pid) {
      const bool works = pid < 3 || (tick >= 300 && tick < 600);
      if (works)
        fakes.processes.at(100 + pid).usage.userTime += 1'000'000'000U + figures() % 900'000'000U;
    }
    fakes.clock.advance(2s);
    engine->tick();
    fakes.mainLoop.runPosted();
    sd_event_run(loop->handle(), 0);
  }
  platform::testing::runBriefly(*loop);
  ASSERT_FALSE(host->signals.empty());
  EXPECT_LT(host->signals.size(), 30U);
}

TEST_F(MenuOfEngine, EndsTheLoopWhenQuitIsChosen) {
  host->event(host->idOf("Quit Staylit"), "clicked");
  EXPECT_TRUE(eventually([this] { return loop->isStopping(); }));
}

}  // namespace
}  // namespace staylit
