#include "Staylit/MenuBarController.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Staylit/Prefs.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakeUserInterface.h"
#include "Tests/Staylit/StatusPrinter.h"

namespace staylit {

void PrintTo(const MenuItem& item, std::ostream* stream) {
  *stream << (item.isSeparator ? "---" : item.title) << (item.isEnabled ? "" : " (off)")
          << (item.isOn ? " (on)" : "") << " " << static_cast<int>(item.action) << " "
          << item.representedObject.value_or("-") << " [" << item.keyEquivalent << "] "
          << item.toolTip;
}

void PrintTo(const StatusItemAppearance& appearance, std::ostream* stream) {
  *stream << appearance.symbol << (appearance.appearsDisabled ? " (dimmed) " : " ")
          << appearance.toolTip;
}

namespace {

using Action = MenuItem::Action;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;
using tidewell::BusyApp;

BusyApp busyApp(std::string id, std::string display, double cpuPercent = 50) {
  BusyApp app;
  app.id = std::move(id);
  app.display = std::move(display);
  app.cpuPercent = cpuPercent;
  return app;
}

/// The applications "app0" to "app<count - 1>", with the names "App 0" and so on.
std::vector<BusyApp> busyApps(int count) {
  std::vector<BusyApp> apps;
  for (int number = 0; number < count; ++number) {
    apps.push_back(busyApp("app" + std::to_string(number), "App " + std::to_string(number)));
  }
  return apps;
}

Texts numbered(const std::string& prefix, int count) {
  Texts texts;
  for (int number = 0; number < count; ++number)
    texts.push_back(prefix + std::to_string(number));
  return texts;
}

MenuItem separator() {
  MenuItem item;
  item.isSeparator = true;
  return item;
}

MenuItem header(const std::string& title) {
  MenuItem item;
  item.title = title;
  item.isEnabled = false;
  return item;
}

MenuItem command(const std::string& title, const std::string& key, Action action,
                 const std::string& toolTip = "") {
  MenuItem item;
  item.title = title;
  item.keyEquivalent = key;
  item.action = action;
  item.toolTip = toolTip;
  return item;
}

MenuItem toggle(const std::string& title, const std::string& id, bool isOn,
                const std::string& toolTip) {
  MenuItem item;
  item.title = title;
  item.isToggle = true;
  item.isOn = isOn;
  item.toolTip = toolTip;
  item.action = Action::toggleApp;
  item.representedObject = id;
  return item;
}

/// The items between the heading `title` and the next separator.
Menu under(const Menu& menu, const std::string& title) {
  const auto heading = std::ranges::find(menu, title, &MenuItem::title);
  if (heading == menu.end()) return {};
  const auto end = std::find_if(heading, menu.end(), [](const auto& i) { return i.isSeparator; });
  return {heading + 1, end};
}

Texts titles(const Menu& menu) {
  Texts result;
  for (const MenuItem& item : menu)
    result.push_back(item.isSeparator ? "---" : item.title);
  return result;
}

const std::vector<EngineStatus>& allStatuses() {
  static const std::vector<EngineStatus> all = {EngineStatus::holding({}),
                                                EngineStatus::holding({"Xcode"}),
                                                EngineStatus::holding({"Xcode", "B", "C"}),
                                                EngineStatus::winding(45),
                                                EngineStatus::blocked("battery below 20%"),
                                                EngineStatus::idle(),
                                                EngineStatus::paused()};
  return all;
}

class MenuBarControllerTest : public testing::Test {
 protected:
  void SetUp() override {
    Prefs::shared();  // This registers the defaults, which is one of the calls.
    fakes.calls->clear();
  }

  void ignore(const Texts& ids) { fakes.defaults.stored["ignoredApps"] = ids; }
  Texts ignored() { return *fakes.defaults.stringList("ignoredApps"); }
  Menu menu() { return controller->menuNeedsUpdate(); }
  MenuItem item(const std::string& title) {
    const Menu all = menu();
    const auto found = std::ranges::find(all, title, &MenuItem::title);
    return found == all.end() ? MenuItem() : *found;
  }

  tidewell::FakePorts fakes;
  FakeUserInterface userInterface{fakes.calls};
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
  std::unique_ptr<MenuBarController> controller =
      std::make_unique<MenuBarController>(*engine, userInterface, fakes.ports);
};

// The status item.

TEST_F(MenuBarControllerTest, ShowsTheStatusFromTheLoopRightAfterCreation) {
  EXPECT_TRUE(userInterface.shown.empty());
  EXPECT_EQ(fakes.mainLoop.posted(), 1U);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(userInterface.shown,
            (std::vector<StatusItemAppearance>{
                {"cup.and.saucer", "Staylit", true, "Idle \u2014 your Mac can sleep"}}));
}

TEST_F(MenuBarControllerTest, FirstShowsTheStatusAsItWasAtCreation) {
  engine->status().set(EngineStatus::paused());
  fakes.mainLoop.runPosted();
  ASSERT_EQ(userInterface.shown.size(), 2U);
  EXPECT_EQ(userInterface.shown[0].toolTip, "Idle \u2014 your Mac can sleep");
  EXPECT_EQ(userInterface.shown[1].toolTip, "Paused");
}

TEST_F(MenuBarControllerTest, ShowsEveryPublishedStatusOnceAndInOrder) {
  fakes.mainLoop.runPosted();
  userInterface.shown.clear();
  engine->status().set(EngineStatus::winding(2));
  engine->status().set(EngineStatus::winding(1));
  engine->status().set(EngineStatus::winding(1));
  EXPECT_TRUE(userInterface.shown.empty()) << "before the loop runs";
  fakes.mainLoop.runPosted();
  Texts toolTips;
  for (const StatusItemAppearance& appearance : userInterface.shown)
    toolTips.push_back(appearance.toolTip);
  EXPECT_EQ(toolTips,
            (Texts{"Work stopped \u2014 releasing in 2s", "Work stopped \u2014 releasing in 1s",
                   "Work stopped \u2014 releasing in 1s"}));
}

TEST_F(MenuBarControllerTest, FollowsARunningEngine) {
  engine->start();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(userInterface.shown.back(),
            (StatusItemAppearance{"cup.and.saucer.fill", "Staylit", false,
                                  "Work stopped \u2014 releasing in 120s"}));
}

TEST_F(MenuBarControllerTest, TellsTheItemOfOtherRowsButNotOfOtherFigures) {
  const auto changesAfter = [this](const std::vector<BusyApp>& busy, EngineStatus status) {
    userInterface.menuChanges = 0;
    engine->busyApps().set(busy);
    engine->status().set(std::move(status));
    fakes.mainLoop.runPosted();
    return userInterface.menuChanges;
  };
  fakes.mainLoop.runPosted();
  const auto both = EngineStatus::holding({"Aider", "Codex"});
  EXPECT_EQ(changesAfter({busyApp("aider", "Aider"), busyApp("codex", "Codex")}, both), 1);
  EXPECT_EQ(changesAfter({busyApp("aider", "Aider", 70), busyApp("codex", "Codex")}, both), 0);
  EXPECT_EQ(changesAfter({busyApp("codex", "Codex"), busyApp("aider", "Aider")},
                         EngineStatus::holding({"Codex", "Aider"})),
            0);
  EXPECT_EQ(changesAfter({busyApp("aider", "Aider")}, EngineStatus::holding({"Aider"})), 1);
  EXPECT_EQ(changesAfter({}, EngineStatus::winding(120)), 1);
  EXPECT_EQ(changesAfter({}, EngineStatus::winding(118)), 0);
  engine->assertingApps().set({"Player"});
  EXPECT_EQ(changesAfter({}, EngineStatus::winding(116)), 1);
  ignore({"make"});
  EXPECT_EQ(changesAfter({}, EngineStatus::winding(114)), 1);
  EXPECT_EQ(changesAfter({}, EngineStatus::winding(112)), 0);
}

TEST_F(MenuBarControllerTest, ShowsNothingOnceItIsGone) {
  engine->status().set(EngineStatus::paused());
  controller.reset();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(userInterface.shown.empty());
}

TEST_F(MenuBarControllerTest, HearsNothingFromTheEngineOnceItIsGone) {
  fakes.mainLoop.runPosted();
  controller.reset();
  engine->status().set(EngineStatus::paused());
  EXPECT_EQ(fakes.mainLoop.posted(), 0U);
}

TEST_F(MenuBarControllerTest, PostedWorkMayOutliveControllerAndEngine) {
  engine->status().set(EngineStatus::holding({"A"}));
  controller.reset();
  engine.reset();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(userInterface.shown.empty());
}

TEST_F(MenuBarControllerTest, DestroysTheStatusItemWithItself) {
  EXPECT_EQ(userInterface.menu, controller.get());
  controller.reset();
  EXPECT_EQ(userInterface.menu, nullptr);
}

TEST_F(MenuBarControllerTest, IsReadyWhenTheStatusItemAsksForTheMenuAtOnce) {
  Menu early;
  userInterface.whileMakingStatusItem = [&](MenuDelegate& delegate) {
    early = delegate.menuNeedsUpdate();
  };
  const MenuBarController another(*engine, userInterface, fakes.ports);
  EXPECT_EQ(early, menu());
}

TEST(MenuBarController, WorksWithoutAPlaceForTheStatusItem) {
  tidewell::FakePorts fakes;
  FakeUserInterface userInterface(fakes.calls);
  userInterface.hasPlaceForStatusItem = false;
  StaylitEngine engine(fakes.ports);
  MenuBarController controller(engine, userInterface, fakes.ports);
  engine.status().set(EngineStatus::paused());
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(userInterface.shown.empty());
  EXPECT_EQ(controller.menuNeedsUpdate().size(), 7U);
}

TEST(MenuBarController, ShowsNoStatusThatWasPostedByAnEarlierControllerInItsPlace) {
  tidewell::FakePorts fakes;
  FakeUserInterface userInterface;
  StaylitEngine engine(fakes.ports);
  std::optional<MenuBarController> controller;
  controller.emplace(engine, userInterface, fakes.ports);
  engine.status().set(EngineStatus::paused());
  controller.reset();
  engine.status().set(EngineStatus::winding(3));
  controller.emplace(engine, userInterface, fakes.ports);
  fakes.mainLoop.runPosted();
  ASSERT_EQ(userInterface.shown.size(), 1U);
  EXPECT_EQ(userInterface.shown[0].toolTip, "Work stopped \u2014 releasing in 3s");
}

TEST(MenuBarController, MakesOneStatusItemAndNoWindow) {
  tidewell::FakePorts fakes;
  FakeUserInterface userInterface(fakes.calls);
  StaylitEngine engine(fakes.ports);
  Prefs::shared();  // This registers the defaults, which is one of the calls.
  fakes.calls->clear();
  const MenuBarController controller(engine, userInterface, fakes.ports);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->all(), Texts{"make status item"});
}

TEST(MenuBarController, HasAFullCupWhileItHoldsAndAnOutlineThatIsDimmedWhileItDoesNot) {
  const auto appearance = MenuBarController::appearance;
  EXPECT_EQ(appearance(EngineStatus::holding({"A"})),
            (StatusItemAppearance{"cup.and.saucer.fill", "Staylit", false, "Awake for A"}));
  EXPECT_EQ(appearance(EngineStatus::winding(45)),
            (StatusItemAppearance{"cup.and.saucer.fill", "Staylit", false,
                                  "Work stopped \u2014 releasing in 45s"}));
  EXPECT_EQ(appearance(EngineStatus::blocked("Low Power Mode")),
            (StatusItemAppearance{"cup.and.saucer", "Staylit", true,
                                  "Not holding \u2014 Low Power Mode"}));
  EXPECT_EQ(
      appearance(EngineStatus::idle()),
      (StatusItemAppearance{"cup.and.saucer", "Staylit", true, "Idle \u2014 your Mac can sleep"}));
  EXPECT_EQ(appearance(EngineStatus::paused()),
            (StatusItemAppearance{"pause.circle", "Staylit", false, "Paused"}));
}

TEST(MenuBarController, SummarizesEveryStatusInOneLine) {
  const auto summary = MenuBarController::summary;
  EXPECT_EQ(summary(EngineStatus::holding({})), "Holding sleep");
  EXPECT_EQ(summary(EngineStatus::holding({"Xcode"})), "Awake for Xcode");
  EXPECT_EQ(summary(EngineStatus::holding({"Xcode", "B"})), "Awake for Xcode +1 more");
  EXPECT_EQ(summary(EngineStatus::holding({"Xcode", "B", "C"})), "Awake for Xcode +2 more");
  EXPECT_EQ(summary(EngineStatus::holding({"", "B"})), "Awake for  +1 more");
  EXPECT_EQ(summary(EngineStatus::winding(45)), "Work stopped \u2014 releasing in 45s");
  EXPECT_EQ(summary(EngineStatus::winding(0)), "Work stopped \u2014 releasing in 0s");
  EXPECT_EQ(summary(EngineStatus::blocked("R")), "Not holding \u2014 R");
  EXPECT_EQ(summary(EngineStatus::idle()), "Idle \u2014 your Mac can sleep");
  EXPECT_EQ(summary(EngineStatus::paused()), "Paused");
}

TEST_F(MenuBarControllerTest, ToolTipAndFirstLineAreAlwaysTheSameText) {
  for (const EngineStatus& status : allStatuses()) {
    engine->status().set(status);
    fakes.mainLoop.runPosted();
    EXPECT_EQ(menu().front(), header(userInterface.shown.back().toolTip));
  }
}

// The menu.

TEST_F(MenuBarControllerTest, AnIdleEngineHasNothingButStatusAndCommands) {
  EXPECT_EQ(menu(), (Menu{header("Idle \u2014 your Mac can sleep"), separator(),
                          command("Pause", "p", Action::togglePause),
                          command("Choose Apps\u2026", "a", Action::openApps,
                                  "Pick which apps may keep your Mac awake"),
                          command("Settings\u2026", ",", Action::openSettings), separator(),
                          command("Quit Staylit", "q", Action::terminate)}));
}

TEST_F(MenuBarControllerTest, APausedEngineCanBeResumed) {
  engine->setPaused(true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(userInterface.shown.back(),
            (StatusItemAppearance{"pause.circle", "Staylit", false, "Paused"}));
  EXPECT_EQ(menu()[0], header("Paused"));
  EXPECT_EQ(menu()[2], command("Resume", "p", Action::togglePause));
}

TEST_F(MenuBarControllerTest, ListsBusyAppsThenIgnoredAppsThenAskingApps) {
  engine->status().set(EngineStatus::holding({"Xcode", "Transcoder"}));
  engine->busyApps().set(
      {busyApp("com.apple.dt.Xcode", "Xcode", 112), busyApp("node", "npm / node")});
  engine->assertingApps().set({"Keynote"});
  ignore({"com.apple.Safari"});
  EXPECT_EQ(titles(menu()),
            (Texts{"Awake for Xcode +1 more", "---", "Staying awake for", "Xcode \u2014 112% CPU",
                   "npm / node \u2014 50% CPU", "---", "Not watching", "Safari", "---",
                   "Asked to stay awake", "  Keynote", "---", "Pause", "Choose Apps\u2026",
                   "Settings\u2026", "---", "Quit Staylit"}));
}

TEST_F(MenuBarControllerTest, ABusyAppHasItsReasonACheckMarkAndItsIdentifier) {
  BusyApp app = busyApp("com.example.app", "Example", 12);
  app.netKBps = 40;
  engine->busyApps().set({app});
  EXPECT_EQ(under(menu(), "Staying awake for"),
            (Menu{toggle("Example \u2014 12% CPU \u00B7 40 KB/s net", "com.example.app", true,
                         "Stop staying awake for Example")}));
}

TEST_F(MenuBarControllerTest, ABusyAppThatIsIgnoredHasNoCheckMark) {
  engine->busyApps().set({busyApp("a", "A", 0), busyApp("b", "B", 0)});
  ignore({"b"});
  EXPECT_EQ(under(menu(), "Staying awake for"),
            (Menu{toggle("A \u2014 active", "a", true, "Stop staying awake for A"),
                  toggle("B \u2014 active", "b", false, "Stay awake for B again")}));
  EXPECT_EQ(under(menu(), "Not watching"), (Menu{toggle("b", "b", false, "")}));
}

TEST_F(MenuBarControllerTest, BusyAppsAreComparedWithTheIgnoredOnesToTheLetter) {
  engine->busyApps().set({busyApp("node", "npm / node", 0)});
  ignore({"Node"});
  EXPECT_TRUE(under(menu(), "Staying awake for")[0].isOn);
}

TEST_F(MenuBarControllerTest, ListsEightOfTenBusyAppsInTheirOrderAndMentionsNoOthers) {
  std::vector<BusyApp> apps = busyApps(10);
  std::ranges::reverse(apps);
  engine->busyApps().set(apps);
  EXPECT_EQ(titles(under(menu(), "Staying awake for")),
            (Texts{"App 9 \u2014 50% CPU", "App 8 \u2014 50% CPU", "App 7 \u2014 50% CPU",
                   "App 6 \u2014 50% CPU", "App 5 \u2014 50% CPU", "App 4 \u2014 50% CPU",
                   "App 3 \u2014 50% CPU", "App 2 \u2014 50% CPU"}));
}

TEST_F(MenuBarControllerTest, ListsSevenAndEightBusyAppsInFull) {
  engine->busyApps().set(busyApps(7));
  EXPECT_EQ(under(menu(), "Staying awake for").size(), 7U);
  engine->busyApps().set(busyApps(8));
  EXPECT_EQ(under(menu(), "Staying awake for").size(), 8U);
}

TEST_F(MenuBarControllerTest, ListsSixOfSevenIgnoredAppsAndCountsOne) {
  ignore(numbered("app", 7));
  EXPECT_EQ(under(menu(), "Not watching"),
            (Menu{toggle("app0", "app0", false, ""), toggle("app1", "app1", false, ""),
                  toggle("app2", "app2", false, ""), toggle("app3", "app3", false, ""),
                  toggle("app4", "app4", false, ""), toggle("app5", "app5", false, ""),
                  header("  \u2026and 1 more \u2014 see Choose Apps")}));
}

TEST_F(MenuBarControllerTest, ListsSixIgnoredAppsInFull) {
  ignore(numbered("app", 6));
  EXPECT_EQ(titles(under(menu(), "Not watching")), numbered("app", 6));
}

TEST_F(MenuBarControllerTest, CountsAllIgnoredAppsThatItDoesNotList) {
  ignore(numbered("app", 9));
  EXPECT_EQ(under(menu(), "Not watching").back(),
            header("  \u2026and 3 more \u2014 see Choose Apps"));
  ignore(numbered("app", 1006));
  EXPECT_EQ(under(menu(), "Not watching").back(),
            header("  \u2026and 1000 more \u2014 see Choose Apps"));
  EXPECT_EQ(under(menu(), "Not watching").size(), 7U);
}

TEST_F(MenuBarControllerTest, CountsAnIgnoredAppThatIsStoredTwiceOnce) {
  ignore({"a", "a", "b", "c", "d", "e", "f"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), (Texts{"a", "b", "c", "d", "e", "f"}));
}

TEST_F(MenuBarControllerTest, SortsIgnoredAppsByTheirIdentifiersCodePointByCodePoint) {
  ignore({"b", "\u00E9", "a", "B", "com.apple.dt.Xcode", "_"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), (Texts{"B", "_", "a", "b", "Xcode", "\u00E9"}));
}

TEST_F(MenuBarControllerTest, NamesIgnoredAppsAsTheCatalogueDoes) {
  ignore({"COM.APPLE.SAFARI", "com.docker.backend", "python3"});
  EXPECT_EQ(under(menu(), "Not watching"), (Menu{toggle("Safari", "COM.APPLE.SAFARI", false, ""),
                                                 toggle("Docker", "com.docker.backend", false, ""),
                                                 toggle("Python", "python3", false, "")}));
}

TEST_F(MenuBarControllerTest, ShowsTheIdentifierOfAnIgnoredAppThatTheCatalogueDoesNotKnow) {
  ignore({"com.example.unknown"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), Texts{"com.example.unknown"});
}

TEST_F(MenuBarControllerTest, ListsFiveOfSixAskingAppsInTheirOrderAndMentionsNoOthers) {
  engine->assertingApps().set({"F", "E", "D", "C", "B", "A"});
  EXPECT_EQ(under(menu(), "Asked to stay awake"),
            (Menu{header("  F"), header("  E"), header("  D"), header("  C"), header("  B")}));
}

TEST_F(MenuBarControllerTest, TellsTheProgramOfAnAskingProcessThatHasOnlyANumber) {
  fakes.processes.add(412, "/usr/sbin/backup");
  fakes.processes.add(7, std::nullopt);
  engine->assertingApps().set({"pid 412", "pid 7", "pid x", "pid ", "Keynote"});
  const Menu asking = under(menu(), "Asked to stay awake");
  ASSERT_EQ(titles(asking), (Texts{"  pid 412", "  pid 7", "  pid x", "  pid ", "  Keynote"}));
  EXPECT_EQ(asking[0].toolTip, "/usr/sbin/backup");
  for (std::size_t row = 1; row < asking.size(); ++row)
    EXPECT_EQ(asking[row].toolTip, "") << row;
}

TEST_F(MenuBarControllerTest, ShowsOddTextsAsTheyAre) {
  engine->status().set(EngineStatus::holding({"a&b_c\nd"}));
  engine->busyApps().set({busyApp("", "", 0), busyApp("x", "\u202EZalgo &\t", 0)});
  engine->assertingApps().set({"", "\xFF"});
  ignore({"  ", "a\nb"});
  EXPECT_EQ(menu()[0].title, "Awake for a&b_c\nd");
  EXPECT_EQ(under(menu(), "Staying awake for"),
            (Menu{toggle(" \u2014 active", "", true, "Stop staying awake for "),
                  toggle("\u202EZalgo &\t \u2014 active", "x", true,
                         "Stop staying awake for \u202EZalgo &\t")}));
  EXPECT_EQ(titles(under(menu(), "Not watching")), (Texts{"  ", "a\nb"}));
  EXPECT_EQ(titles(under(menu(), "Asked to stay awake")), (Texts{"  ", "  \xFF"}));
}

TEST_F(MenuBarControllerTest, ReadsTheIgnoredAppsAfreshForEveryMenu) {
  ignore({"a"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), Texts{"a"});
  ignore({"b"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), Texts{"b"});
  fakes.defaults.stored["ignoredApps"] = Integer{7};
  EXPECT_TRUE(under(menu(), "Not watching").empty());
}

TEST_F(MenuBarControllerTest, MakingTheMenuChangesNothing) {
  engine->busyApps().set(busyApps(3));
  ignore(numbered("app", 2));
  fakes.mainLoop.runPosted();
  fakes.calls->clear();
  EXPECT_EQ(menu(), menu());
  EXPECT_EQ(fakes.calls->only({"write ignoredApps", "list processes", "activate"}), Texts{});
  EXPECT_EQ(fakes.mainLoop.posted(), 0U);
}

/// The shape that every menu has, whatever the engine found.
void expectWellFormed(const Menu& menu, const std::string& status) {
  ASSERT_GE(menu.size(), 7U);
  EXPECT_EQ(menu.front(), header(status));
  EXPECT_EQ(menu.back().title, "Quit Staylit");
  EXPECT_LE(under(menu, "Staying awake for").size(), 8U);
  EXPECT_LE(under(menu, "Not watching").size(), 7U);
  EXPECT_LE(under(menu, "Asked to stay awake").size(), 5U);
  for (std::size_t index = 1; index < menu.size(); ++index) {
    EXPECT_FALSE(menu[index].isSeparator && menu[index - 1].isSeparator);
    EXPECT_EQ(menu[index].isToggle, menu[index].action == Action::toggleApp);
    EXPECT_EQ(menu[index].isToggle, menu[index].representedObject.has_value());
  }
}

TEST_F(MenuBarControllerTest, AThousandMenusAreWellFormedWhileTheStateChanges) {
  std::mt19937 random(20240517);
  const auto upTo = [&random](int limit) {
    return std::uniform_int_distribution<int>(0, limit)(random);
  };
  for (int round = 0; round < 1000; ++round) {
    const EngineStatus status = allStatuses()[static_cast<std::size_t>(upTo(6))];
    engine->busyApps().set(busyApps(upTo(12)));
    engine->assertingApps().set(numbered("asking", upTo(9)));
    ignore(numbered("app", upTo(12)));
    engine->status().set(status);
    const Menu made = menu();
    expectWellFormed(made, status.summary());
    controller->perform(made[static_cast<std::size_t>(upTo(static_cast<int>(made.size()) - 1))]);
    fakes.mainLoop.runPosted();
    if (HasFailure()) FAIL() << "in round " << round;
  }
  EXPECT_LE(userInterface.windows.size(), 2U);
}

// Actions.

TEST_F(MenuBarControllerTest, ChoosingAWatchedAppIgnoresItAndTicksAtOnce) {
  const Texts inOrder = {"write ignoredApps", "list processes"};
  engine->busyApps().set({busyApp("z", "Z"), busyApp("a", "A")});
  ignore({"m"});
  controller->perform(item("A \u2014 50% CPU"));
  EXPECT_EQ(ignored(), (Texts{"a", "m"}));
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(MenuBarControllerTest, ChoosingABusyAppThatIsIgnoredWatchesItAgainAndTicksAtOnce) {
  const Texts inOrder = {"write ignoredApps", "list processes"};
  engine->busyApps().set({busyApp("b", "B")});
  ignore({"b"});
  const MenuItem chosen = item("B \u2014 50% CPU");
  EXPECT_FALSE(chosen.isOn);
  EXPECT_EQ(chosen.toolTip, "Stay awake for B again");
  controller->perform(chosen);
  EXPECT_EQ(ignored(), Texts{});
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(MenuBarControllerTest, ChoosingAnIgnoredAppWatchesItAgain) {
  ignore({"com.apple.Safari", "x"});
  controller->perform(item("Safari"));
  EXPECT_EQ(ignored(), Texts{"x"});
  EXPECT_EQ(titles(under(menu(), "Not watching")), Texts{"x"});
}

TEST_F(MenuBarControllerTest, AnOldItemTogglesTheStoredStateAndNotTheOneItShowed) {
  engine->busyApps().set({busyApp("a", "A")});
  const MenuItem shownAsWatched = item("A \u2014 50% CPU");
  ignore({"a"});
  controller->toggleApp(shownAsWatched);
  EXPECT_EQ(ignored(), Texts{});
}

TEST_F(MenuBarControllerTest, TogglingTwiceRestoresTheList) {
  const Texts before = {"B", "a", "b"};
  for (const std::string& id : Texts{"a", "A", "B", "c", "", " ", "a\nb", "\u00E9", "\xFF"}) {
    ignore(before);
    const MenuItem chosen = toggle("any", id, true, "");
    controller->toggleApp(chosen);
    const bool wasIgnored = std::ranges::find(before, id) != before.end();
    const Texts between = ignored();
    EXPECT_EQ(std::ranges::count(between, id), wasIgnored ? 0 : 1) << id;
    EXPECT_EQ(between.size(), wasIgnored ? 2U : 4U) << id;
    EXPECT_TRUE(std::ranges::is_sorted(between)) << id;
    controller->toggleApp(chosen);
    EXPECT_EQ(ignored(), before) << id;
  }
}

TEST_F(MenuBarControllerTest, TogglingWithoutAnAppDoesNothing) {
  fakes.calls->clear();
  MenuItem nameless = toggle("A", "a", true, "");
  nameless.representedObject.reset();
  controller->toggleApp(nameless);
  controller->perform(nameless);
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(MenuBarControllerTest, TogglingWhilePausedIsStoredThoughNothingIsSampled) {
  engine->setPaused(true);
  fakes.calls->clear();
  controller->toggleApp(toggle("A", "a", true, ""));
  EXPECT_EQ(ignored(), Texts{"a"});
  EXPECT_EQ(fakes.calls->count("list processes"), 0U);
  EXPECT_EQ(engine->status().get(), EngineStatus::paused());
}

TEST_F(MenuBarControllerTest, PausesAndResumes) {
  engine->tick();
  EXPECT_EQ(fakes.power.live.size(), 1U);
  controller->perform(item("Pause"));
  EXPECT_TRUE(engine->isPaused());
  EXPECT_TRUE(fakes.power.live.empty());
  controller->perform(item("Resume"));
  EXPECT_FALSE(engine->isPaused());
  EXPECT_EQ(engine->status().get(), EngineStatus::winding(120));
}

TEST_F(MenuBarControllerTest, QuitsThroughTheUserInterface) {
  fakes.calls->clear();
  controller->perform(item("Quit Staylit"));
  EXPECT_EQ(fakes.calls->all(), Texts{"terminate"});
}

TEST_F(MenuBarControllerTest, HeadersAndSeparatorsDoNothing) {
  engine->assertingApps().set({"A"});
  ignore(numbered("app", 7));
  const Menu all = menu();
  fakes.calls->clear();
  for (const MenuItem& each : all) {
    if (each.isSeparator || !each.isEnabled) controller->perform(each);
  }
  EXPECT_TRUE(fakes.calls->all().empty());
}

// Windows.

TEST_F(MenuBarControllerTest, OpensChooseAppsInTheMiddleOfTheMainScreen) {
  userInterface.frames = {{{0, 25}, {1440, 815}}, {{1440, 0}, {1920, 1080}}};
  fakes.calls->clear();
  controller->perform(item("Choose Apps\u2026"));
  ASSERT_EQ(userInterface.windows.size(), 1U);
  const auto& window = *userInterface.windows[0];
  EXPECT_EQ(window.style.title, "Choose Apps");
  EXPECT_EQ(window.style.contentSize, (Size{460, 560}));
  ASSERT_NE(window.appsView, nullptr);
  EXPECT_EQ(window.appsView->search(), "");
  EXPECT_EQ(window.appsView->version(), 0);
  EXPECT_EQ(window.origin, (Point{490, 152.5})) << "720 - 230, 432.5 - 280";
  EXPECT_EQ(fakes.calls->all(), (Texts{"make apps window", "set frame origin",
                                       "make key and order front", "activate"}));
}

TEST_F(MenuBarControllerTest, PlacesChooseAppsOnAScreenBeyondTheOriginToo) {
  userInterface.frames = {{{-1920, -200}, {100, 100}}};
  controller->openApps();
  EXPECT_EQ(userInterface.windows[0]->origin, (Point{-2100, -430}));
}

TEST_F(MenuBarControllerTest, LeavesChooseAppsWhereItIsWhenThereIsNoScreen) {
  controller->openApps();
  ASSERT_EQ(userInterface.windows.size(), 1U);
  EXPECT_EQ(userInterface.windows[0]->origin, std::nullopt);
  EXPECT_FALSE(userInterface.windows[0]->isCentered);
  EXPECT_TRUE(userInterface.windows[0]->isInFront);
}

TEST_F(MenuBarControllerTest, OpeningChooseAppsTwiceShowsTheSameWindow) {
  userInterface.frames = {{{0, 0}, {1000, 1000}}};
  controller->openApps();
  fakes.calls->clear();
  userInterface.frames = {{{0, 0}, {2000, 2000}}};
  controller->openApps();
  EXPECT_EQ(userInterface.windows.size(), 1U);
  EXPECT_EQ(userInterface.windows[0]->origin, (Point{270, 220})) << "it stays where it was";
  EXPECT_EQ(fakes.calls->all(), (Texts{"make key and order front", "activate"}));
}

TEST_F(MenuBarControllerTest, ReopeningChooseAppsKeepsItsSearchText) {
  controller->openApps();
  AppsView* view = userInterface.windows[0]->appsView;
  view->setSearch("xcode");
  userInterface.windows[0]->close();
  controller->openApps();
  EXPECT_TRUE(userInterface.windows[0]->isInFront);
  EXPECT_EQ(userInterface.windows[0]->appsView, view);
  EXPECT_EQ(view->search(), "xcode");
}

TEST_F(MenuBarControllerTest, NothingHappensWhenChooseAppsCannotBeMadeUntilItCan) {
  userInterface.canMakeWindows = false;
  userInterface.frames = {{{0, 0}, {1000, 1000}}};
  fakes.calls->clear();
  controller->openApps();
  controller->openApps();
  EXPECT_EQ(fakes.calls->all(), (Texts{"make apps window", "make apps window"}));
  userInterface.canMakeWindows = true;
  controller->openApps();
  ASSERT_EQ(userInterface.windows.size(), 1U);
  EXPECT_TRUE(userInterface.windows[0]->isInFront);
}

TEST_F(MenuBarControllerTest, OpensSettingsWhereTheWindowSystemCentresIt) {
  userInterface.frames = {{{0, 0}, {1000, 1000}}};
  fakes.calls->clear();
  controller->perform(item("Settings\u2026"));
  ASSERT_EQ(userInterface.windows.size(), 1U);
  const auto& window = *userInterface.windows[0];
  EXPECT_EQ(window.style.title, "Staylit Settings");
  EXPECT_EQ(window.style.contentSize, (Size{460, 560}));
  EXPECT_NE(window.settingsView, nullptr);
  EXPECT_EQ(window.origin, std::nullopt);
  EXPECT_EQ(fakes.calls->all(),
            (Texts{"make settings window", "center", "make key and order front", "activate"}));
}

TEST_F(MenuBarControllerTest, OpeningSettingsTwiceShowsTheSameWindow) {
  controller->openSettings();
  userInterface.windows[0]->close();
  fakes.calls->clear();
  controller->openSettings();
  EXPECT_EQ(userInterface.windows.size(), 1U);
  EXPECT_EQ(fakes.calls->all(), (Texts{"make key and order front", "activate"}));
}

TEST_F(MenuBarControllerTest, SettingsAreReadWhenTheirWindowIsFirstOpened) {
  const auto firstLabel = [&] {
    return userInterface.windows[0]->settingsView->form()[0].rows[0].label;
  };
  fakes.defaults.stored["graceSeconds"] = Integer{60};
  controller->openSettings();
  EXPECT_EQ(firstLabel(), "Wait 1 minute after work stops");
  fakes.defaults.stored["graceSeconds"] = Integer{300};
  controller->openSettings();
  EXPECT_EQ(firstLabel(), "Wait 1 minute after work stops") << "and not again";
}

TEST_F(MenuBarControllerTest, SettingsAreReadAgainWhenTheirWindowCouldNotBeMade) {
  userInterface.canMakeWindows = false;
  fakes.calls->clear();
  controller->openSettings();
  EXPECT_EQ(fakes.calls->all(), Texts{"make settings window"});
  userInterface.canMakeWindows = true;
  fakes.defaults.stored["graceSeconds"] = Integer{600};
  controller->openSettings();
  EXPECT_EQ(userInterface.windows[0]->settingsView->form()[0].rows[0].label,
            "Wait 10 minutes after work stops");
}

TEST_F(MenuBarControllerTest, MakesTwoSeparateWindows) {
  controller->openApps();
  controller->openSettings();
  controller->openApps();
  ASSERT_EQ(userInterface.windows.size(), 2U);
  EXPECT_NE(userInterface.windows[0]->appsView, nullptr);
  EXPECT_NE(userInterface.windows[1]->settingsView, nullptr);
}

TEST_F(MenuBarControllerTest, DestroysTheWindowsBeforeTheirViews) {
  controller->openApps();
  controller->openSettings();
  userInterface.windows[0]->appsView->setSearch("last words");
  fakes.calls->clear();
  controller.reset();
  EXPECT_FALSE(userInterface.windows[0]->isAlive);
  EXPECT_FALSE(userInterface.windows[1]->isAlive);
  EXPECT_EQ(fakes.calls->count("end of window last words"), 1U);
  EXPECT_EQ(fakes.calls->count("end of window Sleep"), 1U);
}

}  // namespace
}  // namespace staylit
