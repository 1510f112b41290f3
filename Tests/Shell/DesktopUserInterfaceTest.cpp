#include "Staylit/Desktop/DesktopUserInterface.h"

#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Shell/Support/FakeMenu.h"

namespace staylit {
namespace {

using platform::testing::BusService;
using platform::testing::ScopedEnvironment;
using testing::FakeMenu;

/// Keeps "summary|body" of every notification.
class FakeNotifications {
 public:
  explicit FakeNotifications(const std::string& address)
      : service_(address, {"org.freedesktop.Notifications"}, [this](sd_bus_message* call) {
          const char *name = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
          std::uint32_t replaces = 0;
          if (sd_bus_message_read(call, "susss", &name, &replaces, &icon, &summary, &body) < 0) {
            return;
          }
          const std::lock_guard lock(mutex_);
          shown_.push_back(std::string(summary) + "|" + body);
        }) {}
  std::vector<std::string> shown() {
    const std::lock_guard lock(mutex_);
    return shown_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> shown_;
  BusService service_;
};

class DesktopUserInterfaceTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(sessionBus->connect(), 0);
    notifications.emplace(sessionDaemon->address());
    userInterface.emplace(*loop, *sessionBus);
  }
  bool hasNotWindow() {
    StaylitEngine engine(fakes.ports);
    AppsView view(engine, fakes.ports);
    return userInterface->makeAppsWindow({"Choose Apps", {460, 560}}, view) == nullptr;
  }

  tidewell::FakePorts fakes;
  std::optional<FakeNotifications> notifications;
  std::optional<DesktopUserInterface> userInterface;
};

TEST_F(DesktopUserInterfaceTest, TellsTheUserWhichPackageTheWindowsAreIn) {
  const ScopedEnvironment display("DISPLAY", ":99");
  EXPECT_TRUE(hasNotWindow());
  EXPECT_TRUE(eventually([this] { return notifications->shown().size() == 1; }));
  EXPECT_EQ(notifications->shown()[0],
            "Staylit cannot show a window: its windows are not installed|"
            "Please install the package staylit-desktop.");
}

TEST_F(DesktopUserInterfaceTest, TellsTheUserAtEachAttemptAndTheLogOnce) {
  const ScopedEnvironment x("DISPLAY", std::nullopt);
  const ScopedEnvironment wayland("WAYLAND_DISPLAY", "");
  EXPECT_TRUE(hasNotWindow());
  EXPECT_TRUE(hasNotWindow());
  EXPECT_TRUE(eventually([this] { return notifications->shown().size() == 2; }));
  EXPECT_EQ(notifications->shown()[1],
            "Staylit cannot show a window: there is no display|"
            "Start Staylit within a desktop session.");
  EXPECT_EQ(fakes.log.records().size(), 1U);
  EXPECT_TRUE(userInterface->visibleFrames().empty());
  userInterface->activate();
}

TEST_F(DesktopUserInterfaceTest, TellsWhatLooksLikeMarkupAsItStands) {
  userInterface->tell("Kept \x1B[31mawake", "by <a href='x'>that</a> & more");
  EXPECT_TRUE(eventually([this] { return notifications->shown().size() == 1; }));
  EXPECT_EQ(notifications->shown()[0], "Kept \uFFFD[31mawake|by ‹a href='x'›that‹/a› ＆ more");
}

TEST_F(DesktopUserInterfaceTest, ChoosesFromTheMenuByActionAsLongAsThereIsOne) {
  FakeMenu menu;
  menu.menu = testing::smallMenu();
  userInterface->choose(MenuItem::Action::togglePause);
  auto item = userInterface->makeStatusItem(menu);
  userInterface->choose(MenuItem::Action::togglePause);
  userInterface->choose(MenuItem::Action::openSettings);  // This menu has no such item.
  item.reset();
  userInterface->choose(MenuItem::Action::togglePause);
  EXPECT_EQ(menu.performedTitles(), (std::vector<std::string>{"Pause"}));
}

TEST_F(DesktopUserInterfaceTest, EndsTheLoop) {
  userInterface->terminate();
  EXPECT_TRUE(loop->isStopping());
}

}  // namespace
}  // namespace staylit
