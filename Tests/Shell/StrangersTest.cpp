// Another user calls the program, on a session bus that lets everybody in.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Control/ControlObject.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Staylit/Desktop/Status/StatusObject.h"
#include "Staylit/Desktop/StatusItem/StatusNotifierItem.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/Stranger.h"
#include "Tests/Shell/Support/FakeMenu.h"

namespace staylit {
namespace {

using platform::testing::Stranger;
using testing::FakeMenu;

class StrangersTest : public platform::testing::BusTest {
 protected:
  StrangersTest() { sessionPolicy = platform::testing::PrivateBus::Policy::everybody; }

  void SetUp() override {
    if (const auto obstacle = Stranger::obstacle()) GTEST_SKIP() << *obstacle;
    BusTest::SetUp();
    if (IsSkipped()) return;
    delegate.menu = testing::smallMenu();
    service.emplace(*loop, *sessionBus, [this](MenuItem::Action) {
      ++performed;
      return std::string();
    });
    ASSERT_EQ(service->claim({}, [] {}), ApplicationService::Claim::first);
    item.emplace(*loop, *sessionBus, delegate, StatusIcons{true, "/icons"});
    offered.emplace(*sessionBus, reporter);
    control.emplace(*loop, *sessionBus, pause);
    item->show({"cup.and.saucer", "Staylit", true, "Idle — your Mac can sleep"});
  }
  void TearDown() override {
    control.reset();
    offered.reset();
    item.reset();
    service.reset();
  }

  /// Whether the program refuses this call of the stranger.
  template <class... Arguments>
  bool isRefused(const char* path, const char* interface, const char* member, const char* types,
                 Arguments... arguments) {
    const pid_t child = ::fork();
    if (child == 0) {
      sd_bus* bus = Stranger::become() ? Stranger::connect(sessionDaemon->address()) : nullptr;
      const int result = bus == nullptr
                             ? 0
                             : sd_bus_call_method(bus, ApplicationService::kName, path, interface,
                                                  member, nullptr, nullptr, types, arguments...);
      ::_exit(result == -EACCES ? 0 : 1);
    }
    int status = -1;
    return eventually([&] { return ::waitpid(child, &status, WNOHANG) == child; }) && status == 0;
  }

  FakeMenu delegate;
  int performed = 0;
  std::optional<ApplicationService> service;
  std::optional<StatusNotifierItem> item;
  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  StatusReporter reporter{engine, fakes.ports};
  std::optional<StatusObject> offered;
  PauseControl pause{engine, fakes.ports};
  std::optional<ControlObject> control;
};

TEST_F(StrangersTest, MayNeitherPauseNorEndTheProgramNorShowItsWindows) {
  const char* path = ApplicationService::kPath;
  const char* interface = ApplicationService::kInterface;
  EXPECT_TRUE(isRefused(path, interface, "Activate", "a{sv}", 0));
  EXPECT_TRUE(isRefused(path, interface, "Open", "asa{sv}", 0, 0));
  EXPECT_TRUE(isRefused(path, interface, "ActivateAction", "sava{sv}", "quit", 0, 0));
  EXPECT_TRUE(isRefused(path, interface, "ActivateAction", "sava{sv}", "pause", 0, 0));
  EXPECT_TRUE(isRefused(ControlInterface::kPath, ControlInterface::kName, "Pause", "x", 0));
  EXPECT_TRUE(isRefused(ControlInterface::kPath, ControlInterface::kName, "TogglePause", ""));
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(performed, 0);
  EXPECT_FALSE(engine.isPaused());
}

TEST_F(StrangersTest, MayNeitherUseNorReadTheMenu) {
  const char* path = DBusMenu::kPath;
  const char* interface = DBusMenu::kInterface;
  EXPECT_TRUE(isRefused(path, interface, "GetLayout", "iias", 0, -1, 0));
  EXPECT_TRUE(isRefused(path, interface, "AboutToShow", "i", 0));
  EXPECT_TRUE(isRefused(path, interface, "Event", "isvu", 1, "clicked", "i", 0, 0));
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(delegate.asked, 0);
  EXPECT_TRUE(delegate.performed.empty());
}

TEST_F(StrangersTest, MayNeitherUseNorReadTheItem) {
  const char* path = StatusNotifierItem::kPath;
  EXPECT_TRUE(isRefused(path, StatusNotifierItem::kInterface, "Activate", "ii", 0, 0));
  EXPECT_TRUE(
      isRefused(path, StatusNotifierItem::kInterface, "ProvideXdgActivationToken", "s", "x"));
  EXPECT_TRUE(isRefused(path, "org.freedesktop.DBus.Properties", "Get", "ss",
                        StatusNotifierItem::kInterface, "ToolTip"));
  platform::testing::runBriefly(*loop);
  EXPECT_TRUE(delegate.performed.empty());
}

TEST_F(StrangersTest, MayNotReadTheStatus) {
  const char* path = StatusInterface::kPath;
  const char* properties = "org.freedesktop.DBus.Properties";
  EXPECT_TRUE(isRefused(path, properties, "GetAll", "s", StatusInterface::kName));
  EXPECT_TRUE(isRefused(path, properties, "Get", "ss", StatusInterface::kName, "State"));
  EXPECT_TRUE(isRefused(path, properties, "Set", "ssv", StatusInterface::kName, "State", "s", "x"));
  EXPECT_TRUE(isRefused(path, "org.freedesktop.DBus.Introspectable", "Introspect", ""));
}

}  // namespace
}  // namespace staylit
