#include "Staylit/Desktop/Display/Display.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST_F(DisplayTest, LearnsOnlyVariablesAboutItThatAreNotSet) {
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

TEST_F(DisplayTest, LearnsNoDisplayOfAnotherMachine) {
  for (const char* display : {"host:0", "tcp/host:0", "127.0.0.1:5", "localhost:10.0", "0", ":",
                              ":a", ":0.", ":0;", ":123456", "/tmp/socket", "unix/host:0"}) {
    Display::learn({std::string("DISPLAY=") + display});
    EXPECT_FALSE(Display::isKnown()) << display;
    Display::forget();
  }
  for (const char* display : {":0", ":10.0", "unix:3", "unix:3.1"}) {
    Display::learn({std::string("DISPLAY=") + display});
    EXPECT_TRUE(Display::isKnown()) << display;
    Display::forget();
  }
}

TEST_F(DisplayTest, LearnsAWaylandSocketOnlyOfThisUser) {
  const platform::testing::TemporaryFolder folder;
  folder.write("file", "");
  for (const std::string& display :
       {std::string("../other/wayland-0"), std::string("a/b"), std::string("."),
        (folder.path() / "file").string(), (folder.path() / "missing").string()}) {
    Display::learn({"WAYLAND_DISPLAY=" + display});
    EXPECT_FALSE(Display::isKnown()) << display;
    Display::forget();
  }
  const std::string socket = sessionDaemon->address().substr(std::string("unix:path=").size());
  for (const std::string& display : {std::string("wayland-1"), socket}) {
    Display::learn({"WAYLAND_DISPLAY=" + display});
    EXPECT_TRUE(Display::isKnown()) << display;
    Display::forget();
  }
}

TEST_F(DisplayTest, LearnsNoKeyFileThatWouldMakeItWait) {
  const ScopedEnvironment none("XAUTHORITY", std::nullopt);
  const platform::testing::TemporaryFolder folder;
  const std::string pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  Display::learn({"DISPLAY=:5", "XAUTHORITY=" + pipe, "XAUTHORITY=relative"});
  EXPECT_EQ(std::getenv("XAUTHORITY"), nullptr);
  Display::forget();
  folder.write("keys", "");
  const std::string keys = folder.path() / "keys";
  Display::learn({"DISPLAY=:5", "XAUTHORITY=" + keys});
  EXPECT_EQ(std::getenv("XAUTHORITY"), keys);
  Display::forget();
}

TEST_F(DisplayTest, LearnsNoTextThatIsNoName) {
  const ScopedEnvironment theme("QT_QPA_PLATFORMTHEME", std::nullopt);
  Display::learn({"DISPLAY=:5", "QT_QPA_PLATFORMTHEME=../../tmp/evil"});
  EXPECT_EQ(std::getenv("QT_QPA_PLATFORMTHEME"), nullptr);
  Display::forget();
}

TEST_F(DisplayTest, ForgetsOnlyWhatItLearnt) {
  Display::learn({"DISPLAY=:5"});
  Display::forget();
  EXPECT_FALSE(Display::isKnown());
  EXPECT_STREQ(std::getenv("XAUTHORITY"), "/home/x");
  const ScopedEnvironment own("DISPLAY", ":1");
  Display::forget();
  EXPECT_TRUE(Display::isKnown());
}

TEST_F(DisplayTest, IsForgottenWithItsSessionAndLearntFromTheNextOne) {
  const ScopedEnvironment session("DISPLAY", ":1");
  const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "Earlier");
  Display::forgetAll();
  EXPECT_FALSE(Display::isKnown());
  Display::learn({"WAYLAND_DISPLAY=wayland-9", "XDG_CURRENT_DESKTOP=Later"});
  EXPECT_STREQ(std::getenv("WAYLAND_DISPLAY"), "wayland-9");
  EXPECT_STREQ(std::getenv("XDG_CURRENT_DESKTOP"), "Later");
  EXPECT_EQ(std::getenv("XAUTHORITY"), nullptr);
  Display::forget();
}

TEST_F(DisplayTest, TellsTheVariablesThatAnotherProcessNeeds) {
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
