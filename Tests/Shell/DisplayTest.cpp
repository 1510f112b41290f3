#include "Staylit/Desktop/Display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"

namespace staylit {
namespace {

using platform::testing::BusService;
using platform::testing::ScopedEnvironment;

class DisplayTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(sessionBus->connect(), 0);
  }
  /// A service manager with that property.
  BusService manager(const char* type, const char* value) {
    return BusService(sessionDaemon->address(), {"org.freedesktop.systemd1"},
                      [type, value](sd_bus_message* call) {
                        sd_bus_message* reply = nullptr;
                        sd_bus_message_new_method_return(call, &reply);
                        sd_bus_message_open_container(reply, 'v', type);
                        if (std::string(type) == "s") sd_bus_message_append(reply, "s", value);
                        if (std::string(type) == "as") {
                          sd_bus_message_append(reply, "as", 2, "HOME=/root", value);
                        }
                        sd_bus_message_close_container(reply);
                        sd_bus_send(nullptr, reply, nullptr);
                        sd_bus_message_unref(reply);
                      });
  }

  ScopedEnvironment wayland{"WAYLAND_DISPLAY", std::nullopt};
  ScopedEnvironment x{"DISPLAY", std::nullopt};
  ScopedEnvironment authority{"XAUTHORITY", "/home/x"};
};

TEST_F(DisplayTest, IsKnownByEitherWindowSystem) {
  EXPECT_FALSE(Display::isKnown());
  const ScopedEnvironment empty("DISPLAY", "");
  EXPECT_FALSE(Display::isKnown());
  const ScopedEnvironment set("WAYLAND_DISPLAY", "wayland-1");
  EXPECT_TRUE(Display::isKnown());
}

TEST_F(DisplayTest, LearnsOnlyWhatIsAboutItAndIsNotSet) {
  const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", std::nullopt);
  const ScopedEnvironment home("HOME", "/home/own");
  Display::learn({"HOME=/elsewhere", "XAUTHORITY=/other", "DISPLAY=:5", "DISPLAYED=1", "",
                  "XDG_CURRENT_DESKTOP=A:B=C"});
  EXPECT_STREQ(std::getenv("DISPLAY"), ":5");
  EXPECT_STREQ(std::getenv("XAUTHORITY"), "/home/x");
  EXPECT_STREQ(std::getenv("XDG_CURRENT_DESKTOP"), "A:B=C");
  EXPECT_STREQ(std::getenv("HOME"), "/home/own");
  Display::learn({"WAYLAND_DISPLAY=wayland-9"});
  EXPECT_EQ(std::getenv("WAYLAND_DISPLAY"), nullptr) << "it has one already";
}

TEST_F(DisplayTest, ForgetsWhatItLearntAndNothingElse) {
  Display::learn({"DISPLAY=:5"});
  Display::forget();
  EXPECT_FALSE(Display::isKnown());
  EXPECT_STREQ(std::getenv("XAUTHORITY"), "/home/x");
  const ScopedEnvironment own("DISPLAY", ":1");
  Display::forget();
  EXPECT_TRUE(Display::isKnown());
}

TEST_F(DisplayTest, TellsWhatAnotherProcessNeeds) {
  const ScopedEnvironment set("DISPLAY", ":3");
  const std::vector<std::string> variables = Display::variables();
  EXPECT_NE(std::find(variables.begin(), variables.end(), "DISPLAY=:3"), variables.end());
  EXPECT_NE(std::find(variables.begin(), variables.end(), "XAUTHORITY=/home/x"), variables.end());
}

TEST_F(DisplayTest, LearnsFromTheServiceManager) {
  const BusService service = manager("as", "DISPLAY=:8");
  Display::learnFromServiceManager(*sessionBus);
  EXPECT_STREQ(std::getenv("DISPLAY"), ":8");
}

TEST_F(DisplayTest, LearnsNothingWhereThereIsNoManagerOrAStrangeOne) {
  Display::learnFromServiceManager(*sessionBus);
  EXPECT_FALSE(Display::isKnown());
  const BusService service = manager("s", "DISPLAY=:8");
  Display::learnFromServiceManager(*sessionBus);
  EXPECT_FALSE(Display::isKnown());
}

}  // namespace
}  // namespace staylit
