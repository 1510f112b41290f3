#include "Staylit/Desktop/Session/ApplicationService.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/SilentBus.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit {
namespace {

using platform::Bus;
using platform::testing::BusService;
using platform::testing::ScopedEnvironment;
using testing::Host;
using Action = MenuItem::Action;
using Claim = ApplicationService::Claim;

/// The part of a start of the program that the session sees.
struct Start {
  explicit Start(platform::EventLoop& loop)
      : bus(loop, Bus::Kind::session, quick()), service(loop, bus, [this](Action action) {
          performed.push_back(action);
          return obstacle;
        }) {}

  static platform::BusTiming quick() {
    platform::BusTiming timing;
    timing.firstPause = std::chrono::milliseconds(20);
    timing.longestPause = std::chrono::milliseconds(100);
    return timing;
  }

  Claim claim(const ApplicationService::Request& request) {
    return service.claim(request, [this] { hasLeft = true; });
  }

  bool hasLeft = false;
  std::vector<Action> performed;
  std::string obstacle;  ///< To all that this start is asked for.
  Bus bus;
  ApplicationService service;
};

class ApplicationServiceTest : public platform::testing::BusTest {
 protected:
  bool nameIsOwned() { return sessionBus->nameStatus("com.staylit.app").isOwned(); }
};

TEST_F(ApplicationServiceTest, TakesTheNameAtTheFirstStart) {
  Start first(*loop);
  EXPECT_EQ(first.claim({}), Claim::first);
  EXPECT_TRUE(nameIsOwned());
}

TEST_F(ApplicationServiceTest, ASecondStartMakesTheFirstShowChooseApps) {
  Start first(*loop);
  ASSERT_EQ(first.claim({}), Claim::first);
  Start second(*loop);
  EXPECT_EQ(second.claim({}), Claim::second);
  EXPECT_TRUE(eventually([&] { return !first.performed.empty(); }));
  EXPECT_EQ(first.performed, (std::vector<Action>{Action::openApps}));
  EXPECT_TRUE(second.performed.empty());
}

TEST_F(ApplicationServiceTest, ASecondStartPassesOnItsAction) {
  Start first(*loop);
  ASSERT_EQ(first.claim({}), Claim::first);
  for (const char* action : {"pause", "settings", "choose-apps", "quit"}) {
    Start second(*loop);
    EXPECT_EQ(second.claim({action}), Claim::second);
  }
  EXPECT_TRUE(eventually([&] { return first.performed.size() == 4; }));
  EXPECT_EQ(first.performed, (std::vector<Action>{Action::togglePause, Action::openSettings,
                                                  Action::openApps, Action::terminate}));
}

TEST_F(ApplicationServiceTest, ASecondStartLearnsWhyTheFirstCannotDoIt) {
  Start first(*loop);
  ASSERT_EQ(first.claim({}), Claim::first);
  Start done(*loop);
  EXPECT_EQ(done.claim({"settings"}), Claim::second);
  EXPECT_EQ(done.service.refusal(), "");
  first.obstacle = "there is no display";
  Start refused(*loop);
  EXPECT_EQ(refused.claim({"settings"}), Claim::second);
  EXPECT_EQ(refused.service.refusal(), "there is no display");
}

TEST_F(ApplicationServiceTest, AStartInTheBackgroundLeavesTheFirstAlone) {
  Start first(*loop);
  ASSERT_EQ(first.claim({}), Claim::first);
  Start second(*loop);
  EXPECT_EQ(second.claim({"", true}), Claim::second);
  platform::testing::runBriefly(*loop);
  EXPECT_TRUE(first.performed.empty());
}

TEST_F(ApplicationServiceTest, LearnsWhereTheDisplayIsFromALaterStart) {
  const ScopedEnvironment wayland("WAYLAND_DISPLAY", std::nullopt);
  const ScopedEnvironment x("DISPLAY", std::nullopt);
  Start first(*loop);
  ASSERT_EQ(first.claim({}), Claim::first);
  Host later(*loop, "com.staylit.app");
  EXPECT_EQ(later.call("/com/staylit/app", "org.freedesktop.Application", "Activate",
                       [](sd_bus_message* message) {
                         return sd_bus_message_append(message, "a{sv}", 2, "com.staylit.display",
                                                      "as", 2, "HOME=/tmp", "DISPLAY=:7",
                                                      "activation-token", "s", "token");
                       }),
            "");
  EXPECT_STREQ(std::getenv("DISPLAY"), ":7");
}

TEST_F(ApplicationServiceTest, TellsTheFirstWhereTheDisplayIs) {
  const ScopedEnvironment wayland("WAYLAND_DISPLAY", "wayland-4");
  std::string call;
  const BusService first(sessionDaemon->address(), {"com.staylit.app"},
                         [&call](sd_bus_message* message) {
                           call = testing::textOf(message);
                           sd_bus_reply_method_return(message, "");
                         });
  Start second(*loop);
  EXPECT_EQ(second.claim({}), Claim::second);
  EXPECT_NE(call.find("'com.staylit.display' ["), std::string::npos) << call;
  EXPECT_NE(call.find("'WAYLAND_DISPLAY=wayland-4'"), std::string::npos) << call;
}

TEST_F(ApplicationServiceTest, ObeysTheDesktopAndRefusesUnknownActions) {
  Start first(*loop);
  ASSERT_EQ(first.claim({"settings"}), Claim::first);
  Host desktop(*loop, "com.staylit.app");
  const auto call = [&](const char* member, const Bus::Arguments& arguments) {
    return desktop.call("/com/staylit/app", "org.freedesktop.Application", member, arguments);
  };
  EXPECT_EQ(call("Activate",
                 [](sd_bus_message* message) {
                   return sd_bus_message_append(message, "a{sv}", 2, "activation-token", "i", 5,
                                                "other", "as", 1, "x");
                 }),
            "");
  EXPECT_EQ(call("Open",
                 [](sd_bus_message* message) {
                   return sd_bus_message_append(message, "asa{sv}", 1, "file:///x", 0);
                 }),
            "");
  const auto action = [](const char* name) {
    return [name](sd_bus_message* message) {
      return sd_bus_message_append(message, "sava{sv}", name, 1, "s", "parameter", 0);
    };
  };
  EXPECT_EQ(call("ActivateAction", action("pause")), "");
  EXPECT_EQ(call("ActivateAction", action("explode")), "<org.freedesktop.DBus.Error.InvalidArgs>");
  EXPECT_TRUE(eventually([&] { return first.performed.size() == 3; }));
  EXPECT_EQ(first.performed,
            (std::vector<Action>{Action::openApps, Action::openApps, Action::togglePause}));
}

TEST_F(ApplicationServiceTest, IsTheFirstWhereThereIsNoBus) {
  sessionDaemon->stop();
  Start start(*loop);
  EXPECT_EQ(start.claim({}), Claim::first);
}

TEST_F(ApplicationServiceTest, StartsEvenOnABusThatHangs) {
  const platform::testing::SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address());
  Start start(*loop);
  EXPECT_EQ(start.claim({}), Claim::first);
}

TEST_F(ApplicationServiceTest, RunsBesideAnOwnerThatHangsAndGetsTheNameWhenThatEnds) {
  std::optional<BusService> hung;
  hung.emplace(sessionDaemon->address(), std::vector<std::string>{"com.staylit.app"},
               [](sd_bus_message*) {});
  Start start(*loop);
  EXPECT_EQ(start.claim({}), Claim::beside);
  platform::testing::runBriefly(*loop);
  hung.reset();
  Host desktop(*loop, "com.staylit.app");
  EXPECT_TRUE(eventually([&] {
    return desktop.call("/com/staylit/app", "org.freedesktop.Application", "Activate",
                        [](sd_bus_message* message) {
                          return sd_bus_message_append(message, "a{sv}", 0);
                        }) == "";
  }));
}

TEST_F(ApplicationServiceTest, LeavesWhenTheOwnerAnswersAfterAll) {
  const BusService slow(sessionDaemon->address(), {"com.staylit.app"}, [](sd_bus_message* call) {
    // This is longer than a start waits.
    std::this_thread::sleep_for(std::chrono::seconds(6));
    sd_bus_reply_method_return(call, "");
  });
  Start start(*loop);
  ASSERT_EQ(start.claim({}), Claim::beside);
  EXPECT_FALSE(start.hasLeft);
  EXPECT_TRUE(eventually([&] { return start.hasLeft; }));
}

TEST_F(ApplicationServiceTest, DoesNotStartForARequestThatNobodyHears) {
  const BusService hung(sessionDaemon->address(), {"com.staylit.app"}, [](sd_bus_message*) {});
  Start start(*loop);
  EXPECT_EQ(start.claim({"settings"}), Claim::second);
  EXPECT_EQ(start.service.refusal(), "the Staylit that runs does not answer");
}

TEST_F(ApplicationServiceTest, TakesTheNameOfAnOwnerThatDiesInsteadOfAnswering) {
  std::optional<BusService> dying;
  dying.emplace(sessionDaemon->address(), std::vector<std::string>{"com.staylit.app"},
                [](sd_bus_message* call) { sd_bus_close(sd_bus_message_get_bus(call)); });
  Start start(*loop);
  EXPECT_EQ(start.claim({}), Claim::first);
  EXPECT_TRUE(nameIsOwned());
}

TEST_F(ApplicationServiceTest, TakesTheNameAgainWhenTheBusWasRestarted) {
  Start start(*loop);
  ASSERT_EQ(start.claim({}), Claim::first);
  sessionDaemon->stop();
  ASSERT_TRUE(eventually([&] { return start.bus.handle() == nullptr; }));
  sessionDaemon->start();
  EXPECT_TRUE(eventually([&] { return nameIsOwned(); }));
}

}  // namespace
}  // namespace staylit
