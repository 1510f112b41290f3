#include "Staylit/Desktop/Status/StatusQuery.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Staylit/Desktop/Status/StatusObject.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/SilentBus.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using platform::testing::BusService;
using platform::testing::ScopedEnvironment;
using Form = StatusRequest::Form;

/// A Staylit on a bus of its own connection, with an engine over fakes.
struct Running {
  explicit Running(platform::EventLoop& loop) : bus(loop, platform::Bus::Kind::session) {
    bus.connect();
    sd_bus_request_name(bus.handle(), ApplicationService::kName, 0);
    status.emplace(bus, reporter);
  }
  void pause(bool isPaused) {
    engine.setPaused(isPaused);
    fakes.mainLoop.runPosted();
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  StatusReporter reporter{engine, fakes.ports};
  platform::Bus bus;
  std::optional<StatusObject> status;
};

/// Asks on two private buses.
class StatusQueryTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("TZ", "UTC0", 1), 0);
    BusTest::SetUp();
  }

  int ask(const StatusRequest& request = {}) {
    platform::Buses buses(*loop);
    StatusPrinter printer(request, console, clock);
    return StatusQuery(*loop, buses, printer, request).run();
  }

  /// Follows the status, and does the next of `steps` whenever its text has been printed. Stops
  /// after the last.
  struct Step {
    std::string awaited;
    std::function<void()> then;
  };
  int follow(std::vector<Step> steps, Form form = Form::text) {
    std::size_t next = 0;
    const auto limit = std::chrono::steady_clock::now() + 20s;
    const auto timer = loop->scheduleRepeating(0.01s, [&] {
      if (std::chrono::steady_clock::now() > limit) return loop->stop();
      if (!console.both.ends_with(steps[next].awaited)) return;
      if (steps[next].then) steps[next].then();
      if (++next == steps.size()) loop->stop();
    });
    const int status = ask({form, true});
    EXPECT_EQ(next, steps.size()) << console.both;
    return status;
  }

  BusService answering(const BusService::Handler& handler) {
    return {sessionDaemon->address(), {ApplicationService::kName}, handler};
  }

  platform::testing::TemporaryFolder folder;
  /// No Staylit of the real machine has its lock here.
  platform::testing::ScopedEnvironment runtime{"XDG_RUNTIME_DIR", folder.path().string()};
  tidewell::FakeConsole console;
  tidewell::FakeClock clock;
};

TEST_F(StatusQueryTest, SaysThatNoneRunsAndStartsNone) {
  // As an installed Staylit says that the bus may start it.
  sessionDaemon->offer(ApplicationService::kName, "/bin/sleep 100");
  sessionDaemon->stop();
  sessionDaemon->start();
  EXPECT_EQ(ask(), 3);
  EXPECT_EQ(console.output, "Staylit does not run\n");
  EXPECT_EQ(sessionBus->nameStatus(ApplicationService::kName).state,
            platform::NameStatus::State::free);
}

TEST_F(StatusQueryTest, PrintsWhatTheOneOfTheSessionDoes) {
  Running running(*loop);
  running.engine.tick();
  EXPECT_EQ(ask(), 0);
  EXPECT_TRUE(
      console.output.starts_with("Work stopped \u2014 releasing in 120s\nSince:      "
                                 "09:00:00 (0 s)\nReason:     waiting for work to "
                                 "resume\nHeld by:    org.example.Sleep (not read back "
                                 "yet)\n"))
      << console.output;
}

TEST_F(StatusQueryTest, EndsWithOneWhereNothingIsHeld) {
  const Running running(*loop);
  EXPECT_EQ(ask(), 1);
  EXPECT_TRUE(console.output.starts_with("Idle \u2014 your Mac can sleep\n")) << console.output;
}

TEST_F(StatusQueryTest, AsksTheOneOfTheMachineWhereTheSessionHasNone) {
  const BusService machine(systemDaemon->address(), {ApplicationService::kName},
                           [](sd_bus_message* call) {
                             sd_bus_reply_method_return(call, "a{sv}", 2, "State", "s", "paused",
                                                        "Summary", "s", "Paused");
                           });
  EXPECT_EQ(ask(), 1);
  EXPECT_TRUE(console.output.starts_with("Paused\n")) << console.output;
  EXPECT_NE(console.output.find("\nServes:     the whole machine\n"), std::string::npos)
      << console.output;
}

TEST_F(StatusQueryTest, AsksOnlyTheOneOfTheMachineWhereThatIsWanted) {
  const Running session(*loop);
  const StatusRequest request{Form::text, false, true};
  EXPECT_EQ(ask(request), 3);
  EXPECT_EQ(console.output, "Staylit does not run\n");
  systemDaemon->stop();
  EXPECT_EQ(ask(request), 2);
  EXPECT_EQ(console.error, "staylit: there is no system bus here on which one could be asked\n");
}

TEST_F(StatusQueryTest, AsksTheOneOfTheSessionWhereThereAreTwo) {
  const BusService machine(systemDaemon->address(), {ApplicationService::kName},
                           [](sd_bus_message*) {});
  Running session(*loop);
  session.pause(true);
  EXPECT_EQ(ask({Form::json, false}), 1);
  EXPECT_NE(console.output.find(R"("state":"paused")"), std::string::npos) << console.output;
}

TEST_F(StatusQueryTest, SaysSoWhereThereIsNoSessionBus) {
  sessionDaemon->stop();
  EXPECT_EQ(ask(), 2);
  EXPECT_EQ(console.output, "");
  EXPECT_EQ(console.error, "staylit: there is no session bus here on which one could be asked\n");
}

TEST_F(StatusQueryTest, SaysSoWhenTheBusDoesNotAnswer) {
  const platform::testing::SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address());
  EXPECT_EQ(ask(), 2);
  EXPECT_EQ(console.error, "staylit: there is no session bus here on which one could be asked\n");
}

TEST_F(StatusQueryTest, SaysSoWhenTheOneThatRunsDoesNotAnswer) {
  const BusService hung = answering([](sd_bus_message*) {});
  EXPECT_EQ(ask(), 2);
  EXPECT_EQ(console.error, "staylit: the Staylit that runs does not answer\n");
}

TEST_F(StatusQueryTest, SaysSoWhenTheOneThatRunsKnowsNoSuchQuestion) {
  const BusService old = answering([](sd_bus_message* call) {
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no object");
  });
  EXPECT_EQ(ask(), 2);
  EXPECT_EQ(console.error,
            "staylit: the Staylit that runs is of an older version, which does not tell its "
            "status\n");
}

TEST_F(StatusQueryTest, SaysSoWhenTheAnswerSaysNothing) {
  const BusService strange = answering([](sd_bus_message* call) {
    sd_bus_reply_method_return(call, "a{sv}", 2, "State", "i", 5, "Summary", "s", "x");
  });
  EXPECT_EQ(ask(), 2);
  EXPECT_EQ(console.error, "staylit: the Staylit that runs answered what cannot be read\n");
}

TEST_F(StatusQueryTest, SkipsWhatItDoesNotKnowAndCleansTheRest) {
  const BusService later = answering([](sd_bus_message* call) {
    sd_bus_reply_method_return(call, "a{sv}", 6, "Novelty", "(is)", 1, "x", "Names", "i", 7,
                               "State", "s", "idle", "Summary", "s", "a\x1B[2Jb\nc", "Since", "x",
                               INT64_MAX, "Services", "a(sx)", 1, "\x07", INT64_MIN);
  });
  EXPECT_EQ(ask(), 0);
  EXPECT_EQ(
      console.output,
      "a\uFFFD[2Jb\uFFFDc\nSince:      2261-07-15 11:33:20 (0 s)\nHeld by:    \uFFFD (not read "
      "back yet)\nPower:      no battery \u00B7 battery \u00B7 lowPower=false\n");
}

TEST_F(StatusQueryTest, FollowsTheChanges) {
  Running running(*loop);
  EXPECT_EQ(follow({{"09:00:00  Idle \u2014 your Mac can sleep\n", [&] { running.pause(true); }},
                    {"09:00:00  Paused\n", [&] { running.pause(false); }},
                    {"09:00:00  Work stopped \u2014 releasing in 120s\n", nullptr}}),
            0);
  EXPECT_EQ(console.error, "");
}

TEST_F(StatusQueryTest, FollowsFromOneStaylitToTheNext) {
  auto running = std::make_unique<Running>(*loop);
  EXPECT_EQ(follow({{"09:00:00  Idle \u2014 your Mac can sleep\n", [&] { running.reset(); }},
                    {"09:00:00  Staylit does not run\n",
                     [&] {
                       running = std::make_unique<Running>(*loop);
                       running->pause(true);
                     }},
                    {"09:00:00  Paused\n", nullptr}}),
            1);
}

TEST_F(StatusQueryTest, FollowsFromOneBusToTheNext) {
  auto running = std::make_unique<Running>(*loop);
  EXPECT_EQ(follow({{"Idle \u2014 your Mac can sleep\n", [&] { sessionDaemon->stop(); }},
                    {"staylit: there is no session bus here on which one could be asked\n",
                     [&] {
                       running.reset();
                       sessionDaemon->start();
                       running = std::make_unique<Running>(*loop);
                       running->pause(true);
                     }},
                    {"Paused\n", nullptr}}),
            1);
}

TEST_F(StatusQueryTest, FollowsNothingWhereThereIsNoBusFromTheBeginning) {
  sessionDaemon->stop();
  systemDaemon->stop();
  EXPECT_EQ(ask({Form::text, true}), 2);
  EXPECT_EQ(console.error, "staylit: there is no session bus here on which one could be asked\n");
}

TEST_F(StatusQueryTest, StopsFollowingWhenALineIsLost) {
  const Running running(*loop);
  console.outputLost = true;
  EXPECT_EQ(ask({Form::text, true}), 1);
}

TEST_F(StatusQueryTest, WaitsForTheFirstOneToFollow) {
  std::unique_ptr<Running> running;
  EXPECT_EQ(follow({{R"("summary":"Staylit does not run"})"
                     "\n",
                     [&] { running = std::make_unique<Running>(*loop); }},
                    {R"("lowPowerMode":false}})"
                     "\n",
                     nullptr}},
                   Form::json),
            1);
}

}  // namespace
}  // namespace staylit
