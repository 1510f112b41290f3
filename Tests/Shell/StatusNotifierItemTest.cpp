#include "Staylit/Desktop/StatusItem/StatusNotifierItem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Shell/Support/FakeMenu.h"
#include "Tests/Shell/Support/FakeWatcher.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit {
namespace {

using testing::FakeMenu;
using testing::FakeWatcher;
using testing::Host;

const StatusItemAppearance kHeld{"cup.and.saucer.fill", "Staylit", false, "Awake for Aider"};
const StatusItemAppearance kIdle{"cup.and.saucer", "Staylit", true, "Idle — your Mac can sleep"};

class StatusNotifierItemTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    delegate.menu = testing::smallMenu();
    ASSERT_EQ(sessionBus->connect(), 0);
    item.emplace(*loop, *sessionBus, delegate, StatusIcons{true, "/icons"});
    const char* name = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(sessionBus->handle(), &name), 0);
    host.emplace(*loop, name);
  }
  void TearDown() override {
    host.reset();
    item.reset();
  }

  FakeMenu delegate;
  std::optional<StatusNotifierItem> item;
  std::optional<Host> host;
};

TEST_F(StatusNotifierItemTest, DescribesItselfInItsProperties) {
  item->show(kHeld);
  EXPECT_EQ(host->itemProperty("Category"), "'ApplicationStatus'");
  EXPECT_EQ(host->itemProperty("Id"), "'com.staylit.app'");
  EXPECT_EQ(host->itemProperty("Title"), "'Staylit'");
  EXPECT_EQ(host->itemProperty("Status"), "'Active'");
  EXPECT_EQ(host->itemProperty("ItemIsMenu"), "true");
  EXPECT_EQ(host->itemProperty("Menu"), "'/MenuBar'");
  EXPECT_EQ(host->itemProperty("IconThemePath"), "'/icons'");
  EXPECT_EQ(host->itemProperty("IconAccessibleDesc"), "'Staylit'");
  EXPECT_EQ(host->itemProperty("AttentionIconPixmap"), "[]");
  EXPECT_EQ(host->itemProperty("OverlayIconName"), "''");
}

TEST_F(StatusNotifierItemTest, ShowsTheSymbolAndTheToolTip) {
  item->show(kHeld);
  EXPECT_EQ(host->itemProperty("IconName"), "'staylit-cup-and-saucer-fill-symbolic'");
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] 'Awake for Aider' '')");
  item->show(kIdle);
  EXPECT_EQ(host->itemProperty("IconName"), "'staylit-cup-and-saucer-dimmed-symbolic'");
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] 'Idle — your Mac can sleep' '')");
}

TEST_F(StatusNotifierItemTest, HasPixmapsOfFiveSizesForHostsWithoutOurIcons) {
  item->show(kHeld);
  EXPECT_EQ(host->itemProperty("IconPixmap"),
            "[(16 16 <1024>) (22 22 <1936>) (24 24 <2304>) (32 32 <4096>) (48 48 <9216>)]");
  item->show({"no.such.symbol", "", false, ""});
  EXPECT_EQ(host->itemProperty("IconPixmap"), "[]");
}

TEST_F(StatusNotifierItemTest, NamesNoIconThatIsNotInstalled) {
  item.emplace(*loop, *sessionBus, delegate, StatusIcons{});
  item->show(kHeld);
  EXPECT_EQ(host->itemProperty("IconName"), "''");
  EXPECT_EQ(host->itemProperty("IconThemePath"), "''");
  EXPECT_NE(host->itemProperty("IconPixmap"), "[]");
}

TEST_F(StatusNotifierItemTest, CleansTextThatTheBusWouldRefuse) {
  item->show({"pause.circle", "Staylit", false, "Awake for \xff"});
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] 'Awake for \uFFFD' '')");
}

TEST_F(StatusNotifierItemTest, ShowsANameThatLooksLikeMarkupOnEveryHost) {
  item->show({"pause.circle", "Staylit", false, "Awake for <img src='/etc/x'> & more"});
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] 'Awake for ‹img src='/etc/x'› ＆ more' '')");
}

TEST_F(StatusNotifierItemTest, TellsOnlyWhatChanged) {
  item->show(kHeld);
  host->listen("/StatusNotifierItem", "org.kde.StatusNotifierItem",
               {"NewIcon", "NewToolTip", "NewStatus"});
  host->listen("/StatusNotifierItem", "org.freedesktop.DBus.Properties", {"PropertiesChanged"});
  item->show(kHeld);
  item->show({"cup.and.saucer.fill", "Staylit", false, "Awake for Codex"});
  const std::string properties =
      "PropertiesChanged 'org.kde.StatusNotifierItem' "
      "['ToolTip' ('' [] 'Awake for Codex' '')] []";
  EXPECT_TRUE(eventually([&] { return host->hasSignal(properties); }));
  EXPECT_EQ(host->signals, (std::vector<std::string>{"NewToolTip", properties}));
  item->show({"pause.circle", "Staylit", false, "Awake for Codex"});
  EXPECT_TRUE(eventually([&] { return host->hasSignal("NewIcon"); }));
}

TEST_F(StatusNotifierItemTest, BearsWhateverAHostDoesToIt) {
  item->show(kHeld);
  const auto at = [](sd_bus_message* call) { return sd_bus_message_append(call, "ii", 3, -4); };
  for (const char* method : {"Activate", "ContextMenu", "SecondaryActivate"}) {
    EXPECT_EQ(host->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", method, at), "");
  }
  EXPECT_EQ(host->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll",
                       [](sd_bus_message* call) {
                         return sd_bus_message_append(call, "is", 120, "vertical");
                       }),
            "");
  EXPECT_EQ(
      host->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "ProvideXdgActivationToken",
                 [](sd_bus_message* call) { return sd_bus_message_append(call, "s", ""); }),
      "");
  platform::testing::runBriefly(*loop);
  EXPECT_TRUE(delegate.performed.empty());
}

TEST_F(StatusNotifierItemTest, RegistersWhenItFirstHasSomethingToShow) {
  FakeWatcher watcher(sessionDaemon->address());
  platform::testing::runBriefly(*loop);
  EXPECT_TRUE(watcher.items().empty());
  item->show(kHeld);
  EXPECT_TRUE(eventually([&] { return !watcher.items().empty(); }));
  Host byName(*loop, watcher.items().front());
  EXPECT_EQ(byName.itemProperty("Title"), "'Staylit'");
}

TEST_F(StatusNotifierItemTest, WaitsForAWatcherThatComesLate) {
  item->show(kHeld);
  platform::testing::runBriefly(*loop);
  FakeWatcher watcher(sessionDaemon->address());
  EXPECT_TRUE(eventually([&] { return watcher.items().size() == 1; }));
}

TEST_F(StatusNotifierItemTest, RegistersAgainWithAWatcherThatWasRestarted) {
  item->show(kHeld);
  std::optional<FakeWatcher> watcher;
  for (int round = 0; round < 3; ++round) {
    watcher.reset();
    watcher.emplace(sessionDaemon->address());
    EXPECT_TRUE(eventually([&] { return watcher->items().size() == 1; })) << round;
  }
}

TEST_F(StatusNotifierItemTest, RegistersAgainWhenTheBusWasRestarted) {
  item->show(kHeld);
  std::optional<FakeWatcher> watcher;
  watcher.emplace(sessionDaemon->address());
  ASSERT_TRUE(eventually([&] { return watcher->items().size() == 1; }));
  host.reset();
  watcher.reset();
  sessionDaemon->stop();
  ASSERT_TRUE(eventually([this] { return sessionBus->handle() == nullptr; }));
  item->show(kIdle);
  sessionDaemon->start();
  watcher.emplace(sessionDaemon->address());
  EXPECT_TRUE(eventually([&] { return watcher->items().size() == 1; }));
  Host byName(*loop, watcher->items().front());
  EXPECT_EQ(byName.itemProperty("ToolTip"), "('' [] 'Idle — your Mac can sleep' '')");
}

TEST_F(StatusNotifierItemTest, AsksAgainWhenAWatcherFailsAtFirst) {
  std::atomic<int> asked = 0;
  platform::testing::BusService busy(
      sessionDaemon->address(), {"org.kde.StatusNotifierWatcher"}, [&](sd_bus_message* call) {
        if (++asked < 3) {
          sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "not yet");
        } else {
          sd_bus_reply_method_return(call, "");
        }
      });
  item->show(kHeld);
  EXPECT_TRUE(eventually([&] { return asked == 3; }));
}

TEST_F(StatusNotifierItemTest, OpensChooseAppsForAHostThatDoesNotShowTheMenuOnAClick) {
  delegate.menu.push_back(testing::command("Choose Apps…", "", MenuItem::Action::openApps));
  item->show(kHeld);
  EXPECT_EQ(
      host->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
                 [](sd_bus_message* call) { return sd_bus_message_append(call, "ii", 3, 4); }),
      "");
  EXPECT_TRUE(eventually([this] { return !delegate.performed.empty(); }));
  EXPECT_EQ(delegate.performedTitles(), (std::vector<std::string>{"Choose Apps…"}));
}

TEST_F(StatusNotifierItemTest, CutsAToolTipThatNoPanelCouldShow) {
  StatusItemAppearance endless = kHeld;
  endless.toolTip = std::string(10'000, 'x');
  item->show(endless);
  EXPECT_EQ(host->itemProperty("ToolTip"), "('' [] '" + std::string(400, 'x') + "…' '')");
}

TEST_F(StatusNotifierItemTest, GoesOnWhenAWatcherRefusesIt) {
  item->show(kHeld);
  platform::testing::BusService refusing(
      sessionDaemon->address(), {"org.kde.StatusNotifierWatcher"}, [](sd_bus_message* call) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "no");
      });
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(host->itemProperty("Title"), "'Staylit'");
}

}  // namespace
}  // namespace staylit
