#include "Staylit/Desktop/Menu/DBusMenu.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Shell/Support/FakeMenu.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit {
namespace {

using testing::appItem;
using testing::command;
using testing::FakeMenu;
using testing::HastyPanel;
using testing::header;
using testing::Host;
using testing::separator;
using testing::smallMenu;
using Action = MenuItem::Action;
using Texts = std::vector<std::string>;

constexpr const char* kInvalid = "<org.freedesktop.DBus.Error.InvalidArgs>";

class DBusMenuTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    delegate.menu = smallMenu();
    ASSERT_EQ(sessionBus->connect(), 0);
    menu.emplace(*loop, *sessionBus, delegate);
    const char* name = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(sessionBus->handle(), &name), 0);
    service = name;
    host.emplace(*loop, service);
  }
  void TearDown() override {
    host.reset();
    menu.reset();
  }

  /// How often the menu asks its delegate by itself within three seconds.
  int askedInThreeSeconds() {
    const int before = delegate.asked;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (std::chrono::steady_clock::now() < end)
      sd_event_run(loop->handle(), 100'000);
    return delegate.asked - before;
  }

  std::string service;
  FakeMenu delegate;
  std::optional<DBusMenu> menu;
  std::optional<Host> host;
};

TEST_F(DBusMenuTest, HasTheWholeMenuAsALayout) {
  EXPECT_EQ(host->layout(),
            "1 (0 ['children-display' 'submenu'] "
            "[(1 ['label' 'Awake for Aider' 'enabled' false] []) "
            "(2 ['type' 'separator'] []) "
            "(3 ['label' 'Aider — 50% CPU' 'toggle-type' 'checkmark' 'toggle-state' 1] []) "
            "(4 ['type' 'separator'] []) "
            "(5 ['label' 'Pause' 'shortcut' [['Control' 'p']]] []) "
            "(6 ['label' 'Quit Staylit' 'shortcut' [['Control' 'q']]] [])])");
}

TEST_F(DBusMenuTest, GivesAsDeepALayoutAsIsAskedFor) {
  EXPECT_EQ(host->layout(0, 0), "1 (0 ['children-display' 'submenu'] [])");
  const std::string whole = host->layout();
  EXPECT_EQ(host->layout(0, 1), whole);
  EXPECT_EQ(host->layout(0, 7), whole);
  EXPECT_EQ(host->layout(0, -7), whole);
  EXPECT_EQ(host->layout(2), "1 (2 ['type' 'separator'] [])");
}

TEST_F(DBusMenuTest, GivesOnlyThePropertiesThatAreAskedFor) {
  EXPECT_EQ(host->layout(0, -1, {"type", "toggle-state", "nonsense"}),
            "1 (0 [] [(1 [] []) (2 ['type' 'separator'] []) (3 ['toggle-state' 1] []) "
            "(4 ['type' 'separator'] []) (5 [] []) (6 [] [])])");
}

TEST_F(DBusMenuTest, ServesAHostThatOnlyAsksForGroupsOfProperties) {
  EXPECT_EQ(host->groupProperties({3, 99, 0, 3, 99}, {"label", "children-display"}),
            "[(3 ['label' 'Aider — 50% CPU']) (0 ['children-display' 'submenu'])]");
  EXPECT_EQ(host->groupProperties({}, {"type"}),
            "[(0 []) (1 []) (2 ['type' 'separator']) (3 []) (4 ['type' 'separator']) (5 []) "
            "(6 [])]");
}

TEST_F(DBusMenuTest, AnswersWithTheDefaultOfAPropertyThatIsNotSet) {
  const auto get = [this](std::int32_t id, const char* name) {
    return host->menuCall("GetProperty", [=](sd_bus_message* message) {
      return sd_bus_message_append(message, "is", id, name);
    });
  };
  EXPECT_EQ(get(3, "toggle-state"), "1");
  EXPECT_EQ(get(5, "toggle-state"), "-1");
  EXPECT_EQ(get(3, "enabled"), "true");
  EXPECT_EQ(get(1, "enabled"), "false");
  EXPECT_EQ(get(3, "visible"), "true");
  EXPECT_EQ(get(3, "shortcut"), "[]");
  EXPECT_EQ(get(3, "nonsense"), kInvalid);
  EXPECT_EQ(get(99, "label"), kInvalid);
}

TEST_F(DBusMenuTest, DescribesItselfInItsProperties) {
  const auto get = [this](const char* name) {
    return host->property("/MenuBar", "com.canonical.dbusmenu", name);
  };
  EXPECT_EQ(get("Version"), "3");
  EXPECT_EQ(get("TextDirection"), "'ltr'");
  EXPECT_EQ(get("Status"), "'normal'");
  EXPECT_EQ(get("IconThemePath"), "[]");
}

TEST_F(DBusMenuTest, PerformsWhatIsClicked) {
  EXPECT_EQ(host->event(host->idOf("Aider — 50% CPU"), "clicked"), "");
  EXPECT_TRUE(eventually([this] { return delegate.performed.size() == 1; }));
  EXPECT_EQ(delegate.performed[0], smallMenu()[2]);
}

TEST_F(DBusMenuTest, AnswersBeforeItPerforms) {
  class Slow : public FakeMenu {
   public:
    void perform(const MenuItem& item) override {
      FakeMenu::perform(item);
      onPerform();
    }
    std::function<void()> onPerform;
  };
  Slow slow;
  slow.menu = smallMenu();
  menu.reset();
  menu.emplace(*loop, *sessionBus, slow);
  // The chosen item may end the program.
  slow.onPerform = [this] { menu.reset(); };
  EXPECT_EQ(host->event(host->idOf("Quit Staylit"), "clicked"), "");
  EXPECT_TRUE(eventually([&] { return slow.performed.size() == 1; }));
}

TEST_F(DBusMenuTest, IgnoresClicksOnWhatDoesNothing) {
  host->layout();
  EXPECT_EQ(host->event(1, "clicked"), "");
  EXPECT_EQ(host->event(2, "clicked"), "");
  EXPECT_EQ(host->event(0, "clicked"), "");
  EXPECT_EQ(host->event(3, "hovered"), "");
  EXPECT_EQ(host->event(3, "no-such-event"), "");
  platform::testing::runBriefly(*loop);
  EXPECT_TRUE(delegate.performed.empty());
}

TEST_F(DBusMenuTest, TakesSeveralEventsAtOnceAndNamesTheItemsThatAreUnknown) {
  host->layout();
  const auto group = [this](std::int32_t first, std::int32_t second) {
    return host->menuCall("EventGroup", [=](sd_bus_message* message) {
      return sd_bus_message_append(message, "a(isvu)", 2, first, "clicked", "s", "", 0U, second,
                                   "clicked", "i", 7, 0U);
    });
  };
  EXPECT_EQ(group(3, 99), "[99]");
  EXPECT_EQ(group(5, 6), "[]");
  EXPECT_EQ(group(98, 99), kInvalid);
  EXPECT_TRUE(eventually([this] { return delegate.performed.size() == 3; }));
  EXPECT_EQ(delegate.performedTitles(), (Texts{"Aider — 50% CPU", "Pause", "Quit Staylit"}));
}

TEST_F(DBusMenuTest, TakesAnEmptyGroup) {
  EXPECT_EQ(host->menuCall("EventGroup",
                           [](sd_bus_message* message) {
                             return sd_bus_message_append(message, "a(isvu)", 0);
                           }),
            "[]");
}

TEST_F(DBusMenuTest, PerformsAnItemOfAnOlderLayoutThatAHostStillShows) {
  const std::int32_t aider = host->idOf("Aider — 50% CPU");
  delegate.menu[2] = appItem("Codex — 9% CPU", "codex", true);
  host->layout();
  EXPECT_EQ(host->event(aider, "clicked"), "");
  EXPECT_TRUE(eventually([this] { return delegate.performed.size() == 1; }));
  EXPECT_EQ(delegate.performed[0].representedObject, "aider");
}

TEST_F(DBusMenuTest, SaysWhetherTheMenuChangedWhenItIsAboutToShow) {
  EXPECT_EQ(host->aboutToShow(0), "true");  // No host has seen the menu yet.
  EXPECT_EQ(host->aboutToShow(0), "false");
  delegate.menu[0].title = "Idle";
  EXPECT_EQ(host->aboutToShow(0), "true");
  EXPECT_EQ(host->aboutToShow(0), "false");
  delegate.menu.pop_back();
  EXPECT_EQ(host->aboutToShow(0), "true");
  EXPECT_EQ(host->aboutToShow(3), "false");
  EXPECT_EQ(host->aboutToShow(99), kInvalid);
  EXPECT_EQ(host->aboutToShow(-1), kInvalid);
}

TEST_F(DBusMenuTest, AnswersForSeveralItemsThatAreAboutToShow) {
  const auto group = [this](const std::vector<std::int32_t>& ids) {
    return host->menuCall("AboutToShowGroup", [&](sd_bus_message* message) {
      return Host::appendNumbers(message, ids);
    });
  };
  EXPECT_EQ(group({0, 3, 99}), "[0] [99]");
  EXPECT_EQ(group({0, 3}), "[] []");
  delegate.menu.pop_back();
  EXPECT_EQ(group({3}), "[] []");
  EXPECT_EQ(group({0}), "[0] []");
  EXPECT_EQ(group({}), "[] []");
  EXPECT_EQ(group({98, 99}), kInvalid);
}

TEST_F(DBusMenuTest, TellsOtherHostsOfAChangeThatTheQuestionOfOneHostRevealed) {
  Host other(*loop, service);
  other.listenToMenu();
  host->layout();
  delegate.menu.pop_back();
  EXPECT_EQ(host->aboutToShow(0), "true");
  EXPECT_TRUE(eventually([&] { return other.hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, KeepsAnOpenMenuFresh) {
  host->listenToMenu();
  host->layout();
  host->event(0, "opened");
  delegate.menu[0].title = "Paused";
  delegate.menu[4].title = "Resume";
  menu->refresh();
  EXPECT_TRUE(eventually([this] { return host->signals.size() == 1; }));
  EXPECT_EQ(host->signals[0],
            "ItemsPropertiesUpdated [(1 ['label' 'Paused']) (5 ['label' 'Resume'])] []");
  delegate.menu.erase(delegate.menu.begin() + 1, delegate.menu.begin() + 3);
  menu->refresh();
  EXPECT_TRUE(eventually([this] { return host->hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, RefreshesAnOpenMenuByItself) {
  host->layout();
  host->event(0, "opened");
  const int before = delegate.asked;
  EXPECT_TRUE(eventually([&] { return delegate.asked >= before + 2; }));
}

TEST_F(DBusMenuTest, DoesNotRefreshAClosedMenuByItself) {
  host->layout();
  host->event(0, "opened");
  host->event(0, "closed");
  EXPECT_EQ(askedInThreeSeconds(), 0);
}

TEST_F(DBusMenuTest, TellsOfOtherItemsInAClosedMenuOnlyWhenTheirNumberChanges) {
  host->listenToMenu();
  host->layout();
  delegate.menu[2] = appItem("Codex — 7% CPU", "codex", true);
  delegate.menu[0].title = "Awake for Codex";
  menu->refresh();
  EXPECT_TRUE(eventually([this] { return !host->signals.empty(); }));
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(host->signals, (Texts{"ItemsPropertiesUpdated [(1 ['label' 'Awake for Codex'])] []"}));
  EXPECT_EQ(host->aboutToShow(0), "true");
  EXPECT_TRUE(eventually([this] { return host->hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, TellsAHostOfAnotherLayoutWhileTheMenuIsClosed) {
  host->listenToMenu();
  menu->refresh();
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(delegate.asked, 0) << "nobody knows it yet";
  host->layout();
  delegate.menu.erase(delegate.menu.begin() + 1, delegate.menu.begin() + 3);
  menu->refresh();
  EXPECT_TRUE(eventually([this] { return host->hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, CountsAHostThatLeftTheBusAsOneThatClosedTheMenu) {
  std::optional<Host> other;
  other.emplace(*loop, service);
  other->event(0, "opened");
  other->layout();
  EXPECT_GT(askedInThreeSeconds(), 0);
  other.reset();
  // The delegate is asked no more once the program has noticed that the host is gone.
  EXPECT_TRUE(eventually([this] { return askedInThreeSeconds() == 0; }));
}

TEST_F(DBusMenuTest, GoesOnAnsweringAfterTheLastHostHasClosedTheMenu) {
  host->event(0, "opened");
  EXPECT_EQ(host->event(0, "closed"), "");
  EXPECT_NE(host->layout().find("Aider"), std::string::npos);
  std::optional<Host> other;
  other.emplace(*loop, service);
  other->event(0, "opened");
  other.reset();
  for (int round = 0; round < 3; ++round)
    EXPECT_NE(host->layout().find("Aider"), std::string::npos);
}

TEST_F(DBusMenuTest, LetsTheLoopRestWhenTheMenuIsClosed) {
  host->event(0, "opened");
  host->event(0, "closed");
  host->layout();
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
  int passes = 0;
  while (std::chrono::steady_clock::now() < end) {
    sd_event_run(loop->handle(), 50'000);
    ++passes;
  }
  EXPECT_LT(passes, 100) << "a loop that never waits";
}

TEST_F(DBusMenuTest, KeepsAMenuFreshForAHostThatOnlyAsksBeforeItShowsIt) {
  host->layout();
  host->aboutToShow(0);
  host->listenToMenu();
  delegate.menu[0].title = "Paused";
  EXPECT_TRUE(eventually(
      [this] { return host->hasSignal("ItemsPropertiesUpdated [(1 ['label' 'Paused'])] []"); }));
}

TEST_F(DBusMenuTest, KeepsTheLayoutWhileAHostThatCannotGrowTheMenuShowsIt) {
  host->layout();
  host->aboutToShow(0);
  host->listenToMenu();
  delegate.menu.erase(delegate.menu.begin() + 1, delegate.menu.begin() + 3);
  menu->refresh();
  platform::testing::runBriefly(*loop);
  EXPECT_FALSE(host->hasSignal("LayoutUpdated 2 0"));
  EXPECT_EQ(host->aboutToShow(0), "true") << "it gets the new one before it shows it again";
  EXPECT_TRUE(eventually([this] { return host->hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, TellsTheLayoutThatItHeldBackOnceSomethingIsChosen) {
  host->layout();
  host->aboutToShow(0);
  host->listenToMenu();
  const std::int32_t pause = host->idOf("Pause");
  delegate.menu.erase(delegate.menu.begin() + 1, delegate.menu.begin() + 3);
  menu->refresh();
  platform::testing::runBriefly(*loop);
  ASSERT_FALSE(host->hasSignal("LayoutUpdated 2 0"));
  host->event(pause, "clicked");
  EXPECT_TRUE(eventually([this] { return host->hasSignal("LayoutUpdated 2 0"); }));
}

TEST_F(DBusMenuTest, HasRoomForItemsThatCameAfterAHastyPanelClosedTheMenu) {
  HastyPanel panel(*loop, service);
  const std::size_t before = panel.items();
  panel.showMenu();
  delegate.menu.insert(delegate.menu.begin() + 2, appItem("Codex — 7% CPU", "codex", true));
  menu->refresh();
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(panel.items(), before) << "somebody may still look at a menu that cannot grow";
  // The menu is closed now, of which the panel says nothing.
  EXPECT_TRUE(eventually([&] { return panel.items() == before + 1; }));
  panel.showMenu();
  EXPECT_EQ(panel.height(), before + 1);
  EXPECT_EQ(panel.items(), before + 1);
}

TEST_F(DBusMenuTest, StaysOpenUntilTheLastHostClosesIt) {
  Host other(*loop, service);
  host->event(0, "opened");
  host->event(0, "opened");
  other.event(0, "opened");
  host->event(0, "closed");
  EXPECT_GT(askedInThreeSeconds(), 0);
}

TEST_F(DBusMenuTest, RefusesStrangeItemsAndArgumentsAndGoesOn) {
  EXPECT_EQ(host->layout(99), kInvalid);
  EXPECT_EQ(host->layout(-2147483647 - 1), kInvalid);
  EXPECT_EQ(host->event(2147483647, "clicked"), kInvalid);
  EXPECT_EQ(host->menuCall("GetLayout",
                           [](sd_bus_message* message) {
                             return sd_bus_message_append(message, "s", "strange");
                           }),
            kInvalid);
  EXPECT_EQ(host->menuCall("NoSuchMethod"), "<org.freedesktop.DBus.Error.UnknownMethod>");
  EXPECT_EQ(host->event(0, ""), "");
  EXPECT_EQ(host->event(0, "closed"), "");  // The menu was never open.
  EXPECT_EQ(host->revision(), 1U);
}

TEST_F(DBusMenuTest, ServesAgainWhenTheBusWasRestarted) {
  host->layout();
  host->event(0, "opened");
  host.reset();
  sessionDaemon->stop();
  ASSERT_TRUE(eventually([this] { return sessionBus->handle() == nullptr; }));
  menu->refresh();
  sessionDaemon->start();
  ASSERT_TRUE(eventually([this] { return sessionBus->handle() != nullptr; }));
  platform::testing::runBriefly(*loop);
  const char* name = nullptr;
  sd_bus_get_unique_name(sessionBus->handle(), &name);
  host.emplace(*loop, name);
  EXPECT_EQ(host->revision(), 1U);
  EXPECT_EQ(host->event(0, "opened"), "");
}

TEST_F(DBusMenuTest, GivesAThousandLayoutsOfChangingMenusWithRevisionsThatOnlyGrow) {
  std::uint32_t last = host->revision();
  std::string lastIds;
  for (int round = 0; round < 1000; ++round) {
    delegate.menu = smallMenu();
    delegate.menu[0].title = "Work stopped — releasing in " + std::to_string(round) + "s";
    if (round % 3 == 0) {
      const std::string id = "app" + std::to_string(round);
      delegate.menu.insert(delegate.menu.begin() + 2, appItem(id, id, round % 2 == 0));
    }
    const std::string ids = host->layout(0, -1, {"none"});
    const auto revision = static_cast<std::uint32_t>(std::stoul(ids));
    const std::string items = ids.substr(ids.find(' '));
    ASSERT_EQ(revision, items == lastIds ? last : last + 1) << round;
    last = revision;
    lastIds = items;
    if (round == 0) lastIds = items;
  }
  EXPECT_GT(last, 600U);
}

}  // namespace
}  // namespace staylit
