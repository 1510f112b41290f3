#include "Platform/Linux/Bus/Bus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/SilentBus.h"
#include "Tests/Platform/Support/UnansweredCalls.h"

namespace platform {
namespace {

using testing::BusService;
using testing::BusTest;
using testing::PrivateBus;
using testing::runBriefly;
using testing::runUntil;
using testing::ScopedEnvironment;
using testing::SilentBus;
using testing::UnansweredCalls;

constexpr BusMethod kEcho{"test.Echo", "/", "test.Echo", "Echo"};

/// Answers "Echo" with the text of the call, unless the test makes it silent.
class EchoService {
 public:
  explicit EchoService(const std::string& address, const std::string& name = "test.Echo")
      : service_(address, {name}, [this](sd_bus_message* call) { answer(call); }) {}

  BusService& service() { return service_; }
  std::atomic<bool> isSilent = false;
  std::atomic<int> calls = 0;

  /// Answers the calls that it left unanswered.
  void answerLate() {
    service_.perform([this](sd_bus*) {
      unanswered_.answer(
          [](sd_bus_message* call) { sd_bus_reply_method_return(call, "s", "late"); });
    });
  }

 private:
  void answer(sd_bus_message* call) {
    ++calls;
    if (isSilent) return unanswered_.keep(call);
    const char* text = nullptr;
    if (sd_bus_message_read(call, "s", &text) < 0) return;
    if (std::string(text) == "refuse") {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "no");
    } else {
      sd_bus_reply_method_return(call, "s", text);
    }
  }

  UnansweredCalls unanswered_;
  BusService service_;
};

BusReply echo(Bus& bus, const char* text, Bus::LateReply late = {}) {
  return bus.call(
      kEcho, [text](sd_bus_message* message) { return sd_bus_message_append(message, "s", text); },
      std::move(late));
}

std::string textOf(const BusReply& reply) {
  const char* text = "";
  if (reply) sd_bus_message_read(reply.message.get(), "s", &text);
  return text;
}

TEST_F(BusTest, CallsAMethodAndReadsTheReply) {
  EchoService service(sessionDaemon->address());
  EXPECT_EQ(textOf(echo(*sessionBus, "hello")), "hello");
}

TEST_F(BusTest, FindsEachBusByItsOwnAddress) {
  EchoService service(systemDaemon->address());
  EXPECT_EQ(textOf(echo(*systemBus, "hello")), "hello");
  EXPECT_FALSE(echo(*sessionBus, "hello"));
}

TEST_F(BusTest, ConnectsOnlyWhenItIsUsed) {
  EXPECT_EQ(sessionBus->handle(), nullptr);
  runBriefly(*loop);
  EXPECT_EQ(sessionBus->handle(), nullptr);
  EXPECT_EQ(sessionBus->connect(), 0);
  EXPECT_NE(sessionBus->handle(), nullptr);
}

TEST_F(BusTest, TellsARefusalByErrnoAndName) {
  EchoService service(sessionDaemon->address());
  const BusReply reply = echo(*sessionBus, "refuse");
  EXPECT_FALSE(reply);
  EXPECT_EQ(reply.error, -EACCES);
  EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.AccessDenied");
}

TEST_F(BusTest, DoesNotPauseAfterARefusal) {
  EchoService service(sessionDaemon->address());
  echo(*sessionBus, "refuse");
  EXPECT_EQ(textOf(echo(*sessionBus, "hello")), "hello");
}

TEST_F(BusTest, StartsAServiceOnlyWhenTheCallAsksForIt) {
  const BusReply reply = echo(*sessionBus, "hello");
  EXPECT_EQ(reply.error, -ENXIO);
  EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.NameHasNoOwner");
}

TEST_F(BusTest, SendsWithoutWaitingForAnAnswer) {
  EchoService service(sessionDaemon->address());
  service.isSilent = true;
  EXPECT_LT(sessionBus->send(kEcho), 0);
  ASSERT_EQ(sessionBus->connect(), 0);
  EXPECT_EQ(sessionBus->send(kEcho), 0);
  EXPECT_TRUE(eventually([&] { return service.calls == 1; }));
}

TEST_F(BusTest, CallsWithoutWaitingAndGetsTheReplyFromTheLoop) {
  EchoService service(sessionDaemon->address());
  ASSERT_EQ(sessionBus->connect(), 0);
  std::string heard;
  const BusSlot call = sessionBus->callAsync(
      kEcho, [](sd_bus_message* message) { return sd_bus_message_append(message, "s", "later"); },
      [&](const BusReply& reply) { heard = textOf(reply); });
  ASSERT_TRUE(call);
  EXPECT_EQ(heard, "");
  EXPECT_TRUE(eventually([&] { return heard == "later"; }));
}

TEST_F(BusTest, ForgetsACallWhoseSlotIsDropped) {
  EchoService service(sessionDaemon->address());
  ASSERT_EQ(sessionBus->connect(), 0);
  bool heard = false;
  sessionBus
      ->callAsync(
          kEcho, [](sd_bus_message* message) { return sd_bus_message_append(message, "s", "a"); },
          [&](const BusReply&) { heard = true; })
      .reset();
  EXPECT_EQ(textOf(echo(*sessionBus, "b")), "b");
  runBriefly(*loop);
  EXPECT_FALSE(heard);
}

/// A bus on a clock that the test moves.
class ImpatientBusTest : public BusTest {
 protected:
  BusTiming clocked() {
    BusTiming timing;
    timing.callLimit = std::chrono::milliseconds(100);
    timing.now = [this] { return now; };
    return timing;
  }

  BusTiming::Point now{std::chrono::seconds(1000)};
};

TEST_F(ImpatientBusTest, FailsAtOnceWithTheSameErrorWhileItPausesAfterACallTimedOut) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  service.isSilent = true;
  EXPECT_EQ(echo(bus, "a").error, -ETIMEDOUT);
  EXPECT_EQ(service.calls, 1);
  service.isSilent = false;
  EXPECT_EQ(echo(bus, "b").error, -ETIMEDOUT);
  now += std::chrono::milliseconds(1999);
  EXPECT_EQ(echo(bus, "c").error, -ETIMEDOUT);
  EXPECT_EQ(service.calls, 1);
  now += std::chrono::milliseconds(1);
  EXPECT_EQ(textOf(echo(bus, "d")), "d");
  EXPECT_EQ(service.calls, 2);
}

TEST_F(ImpatientBusTest, CallsNoServiceDuringThePauseAfterACallTimedOut) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  service.isSilent = true;
  EXPECT_EQ(echo(bus, "a").error, -ETIMEDOUT);
  EXPECT_EQ(bus.nameStatus("test.Echo").error, -ETIMEDOUT);
  now += std::chrono::seconds(2);
  EXPECT_TRUE(bus.nameStatus("test.Echo").isOwned());
}

TEST_F(ImpatientBusTest, PausesOnlyForTheServiceThatMayBeStarting) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  service.isSilent = true;
  BusMethod starting = kEcho;
  starting.activation = BusActivation::ifNeeded;
  EXPECT_EQ(bus.call(starting).error, -ETIMEDOUT);
  EXPECT_TRUE(bus.nameStatus("test.Echo").isOwned());
  EXPECT_EQ(bus.call(starting).error, -ETIMEDOUT);
  EXPECT_EQ(service.calls, 1);
}

TEST_F(ImpatientBusTest, PausesTwiceAsLongForAServiceThatStillHangsWhileOthersAnswer) {
  EchoService silent(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  silent.isSilent = true;
  echo(bus, "a");
  now += std::chrono::seconds(2);
  EXPECT_TRUE(bus.nameStatus("test.Echo").isOwned());
  EXPECT_EQ(echo(bus, "b").error, -ETIMEDOUT);
  EXPECT_EQ(silent.calls, 2);
  now += std::chrono::seconds(2);
  EXPECT_TRUE(bus.nameStatus("test.Echo").isOwned());
  EXPECT_EQ(echo(bus, "c").error, -ETIMEDOUT);
  EXPECT_EQ(silent.calls, 2);
  now += std::chrono::seconds(2);
  EXPECT_EQ(echo(bus, "d").error, -ETIMEDOUT);
  EXPECT_EQ(silent.calls, 3);
}

TEST_F(ImpatientBusTest, HandsOverTheReplyThatComesAfterTheCallTimedOut) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  service.isSilent = true;
  std::string late;
  echo(bus, "a", [&](const BusMessage& message) {
    const char* text = nullptr;
    sd_bus_message_read(message.get(), "s", &text);
    late = text;
  });
  service.answerLate();
  EXPECT_TRUE(eventually([&] { return late == "late"; }));
}

TEST_F(ImpatientBusTest, CallsAServiceThatAnsweredAfterAllWithoutAPause) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  service.isSilent = true;
  EXPECT_EQ(echo(bus, "a").error, -ETIMEDOUT);
  EXPECT_EQ(echo(bus, "b").error, -ETIMEDOUT);
  EXPECT_EQ(service.calls, 1);
  service.isSilent = false;
  service.answerLate();
  EXPECT_TRUE(eventually([&] { return textOf(echo(bus, "c")) == "c"; }));
  EXPECT_EQ(service.calls, 2);
}

TEST_F(ImpatientBusTest, ConnectsOnceToASilentBusUntilThePauseIsOver) {
  SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  EXPECT_EQ(echo(bus, "a").error, -ETIMEDOUT);
  EXPECT_EQ(echo(bus, "b").error, -ETIMEDOUT);
  EXPECT_EQ(bus.nameStatus("test.Echo").error, -ETIMEDOUT);
  EXPECT_EQ(bus.connect(), -ETIMEDOUT);
  EXPECT_EQ(silent.connectionsMade(), 1);
  now += std::chrono::seconds(2);
  EXPECT_EQ(echo(bus, "c").error, -ETIMEDOUT);
  EXPECT_EQ(silent.connectionsMade(), 1);
  now += std::chrono::seconds(2);
  EXPECT_EQ(echo(bus, "d").error, -ETIMEDOUT);
  EXPECT_EQ(silent.connectionsMade(), 0);
}

TEST_F(ImpatientBusTest, IsNotBlockedForEverByABusThatFreezes) {
  EchoService service(sessionDaemon->address());
  Bus bus(*loop, Bus::Kind::session, clocked());
  EXPECT_EQ(textOf(echo(bus, "a")), "a");
  sessionDaemon->freeze();
  EXPECT_EQ(echo(bus, "b").error, -ETIMEDOUT);
  sessionDaemon->thaw();
  now += std::chrono::seconds(2);
  EXPECT_EQ(textOf(echo(bus, "c")), "c");
}

TEST_F(ImpatientBusTest, ConnectsAgainAtTheFirstUseAfterThePause) {
  Bus bus(*loop, Bus::Kind::session, clocked());
  ASSERT_EQ(bus.connect(), 0);
  sessionDaemon->stop();
  EXPECT_LT(bus.nameStatus("test.Echo").error, 0);
  sessionDaemon->start();
  EXPECT_LT(bus.nameStatus("test.Echo").error, 0);
  now += std::chrono::seconds(2);
  EXPECT_EQ(bus.nameStatus("test.Echo").state, NameStatus::State::free);
}

TEST_F(BusTest, SaysWhyThereIsNoConnection) {
  const ScopedEnvironment missing("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  Bus bus(*loop, Bus::Kind::session, impatient());
  EXPECT_EQ(bus.connect(), -ENOENT);
  EXPECT_EQ(bus.nameStatus("test.Echo").error, -ENOENT);
}

TEST_F(BusTest, HasNoAddressWithoutAnEnvironment) {
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", std::nullopt);
  Bus bus(*loop, Bus::Kind::session, impatient());
  EXPECT_EQ(bus.connect(), -ENOMEDIUM);
}

TEST_F(BusTest, TellsWhetherAWatchedNameIsOwnedAndThenEachChange) {
  std::string log;
  const BusListening watch =
      sessionBus->watchName("test.Echo", [&](bool owned) { log += owned ? "+" : "-"; });
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(eventually([&] { return log == "-"; }));
  auto service = std::make_unique<EchoService>(sessionDaemon->address());
  EXPECT_TRUE(eventually([&] { return log == "-+"; }));
  service.reset();
  EXPECT_TRUE(eventually([&] { return log == "-+-"; }));
}

TEST_F(BusTest, KnowsAWatchedNameWithoutAsking) {
  EchoService service(sessionDaemon->address());
  bool owned = false;
  const BusListening watch =
      sessionBus->watchName("test.Echo", [&](bool isOwned) { owned = isOwned; });
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(eventually([&] { return owned; }));
  sessionDaemon->freeze();
  EXPECT_TRUE(sessionBus->nameStatus("test.Echo").isOwned());
  sessionDaemon->thaw();
}

TEST_F(BusTest, TellsADroppedWatchNothingMore) {
  int calls = 0;
  BusListening watch;
  watch = sessionBus->watchName("test.Echo", [&](bool) {
    ++calls;
    watch.reset();
  });
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(eventually([&] { return calls == 1; }));
  EchoService service(sessionDaemon->address());
  EXPECT_EQ(textOf(echo(*sessionBus, "a")), "a");
  runBriefly(*loop);
  EXPECT_EQ(calls, 1);
}

TEST_F(BusTest, CountsAReplacedOwnerAsALoss) {
  std::string log;
  const BusListening watch =
      sessionBus->watchName("test.Echo", [&](bool owned) { log += owned ? "+" : "-"; });
  BusService first(sessionDaemon->address(), {}, [](sd_bus_message*) {});
  first.perform(
      [](sd_bus* bus) { sd_bus_request_name(bus, "test.Echo", SD_BUS_NAME_ALLOW_REPLACEMENT); });
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(eventually([&] { return log == "+"; }));
  BusService second(sessionDaemon->address(), {}, [](sd_bus_message*) {});
  second.perform(
      [](sd_bus* bus) { sd_bus_request_name(bus, "test.Echo", SD_BUS_NAME_REPLACE_EXISTING); });
  EXPECT_TRUE(eventually([&] { return log == "+-+"; }));
}

TEST_F(BusTest, ReceivesASignal) {
  EchoService service(sessionDaemon->address());
  std::string heard;
  const BusListening subscription =
      sessionBus->subscribe({"test.Echo", "/", "test.Echo", "Said"}, [&](sd_bus_message* message) {
        const char* text = nullptr;
        sd_bus_message_read(message, "s", &text);
        heard = text;
      });
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(sessionBus->nameStatus("test.Echo").isOwned());
  service.service().perform(
      [](sd_bus* bus) { sd_bus_emit_signal(bus, "/", "test.Echo", "Said", "s", "hello"); });
  EXPECT_TRUE(eventually([&] { return heard == "hello"; }));
}

TEST_F(BusTest, ComesBackByItselfWhileSomebodyListens) {
  std::string connections;
  std::string owners;
  int signals = 0;
  const BusListening connection =
      sessionBus->watchConnection([&](bool connected) { connections += connected ? "+" : "-"; });
  const BusListening watch =
      sessionBus->watchName("test.Echo", [&](bool owned) { owners += owned ? "+" : "-"; });
  const BusListening subscription = sessionBus->subscribe({"test.Echo", "/", "test.Echo", "Said"},
                                                          [&](sd_bus_message*) { ++signals; });
  auto service = std::make_unique<EchoService>(sessionDaemon->address());
  ASSERT_EQ(sessionBus->connect(), 0);
  ASSERT_TRUE(eventually([&] { return connections == "+" && owners == "+"; }));
  const auto firstNumber = sessionBus->connectionNumber();

  sessionDaemon->stop();
  ASSERT_TRUE(eventually([&] { return connections == "+-" && owners == "+-"; }));
  EXPECT_EQ(sessionBus->handle(), nullptr);
  service.reset();
  sessionDaemon->start();
  service = std::make_unique<EchoService>(sessionDaemon->address());
  EXPECT_TRUE(eventually([&] { return connections == "+-+" && owners == "+-+"; }));
  EXPECT_NE(sessionBus->connectionNumber(), firstNumber);

  service->service().perform(
      [](sd_bus* bus) { sd_bus_emit_signal(bus, "/", "test.Echo", "Said", nullptr); });
  EXPECT_TRUE(eventually([&] { return signals == 1; }));
}

TEST_F(BusTest, WaitsForABusThatIsNotThereYetWhileSomebodyListens) {
  sessionDaemon->stop();
  bool connected = false;
  EXPECT_LT(sessionBus->connect(), 0);
  const BusListening connection =
      sessionBus->watchConnection([&](bool isConnected) { connected = isConnected; });
  runBriefly(*loop);
  sessionDaemon->start();
  EXPECT_TRUE(eventually([&] { return connected; }));
}

TEST_F(BusTest, NeverWaitsInTheLoopForABusThatSaysNothing) {
  SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address());
  BusTiming timing = impatient();
  timing.callLimit = std::chrono::milliseconds(200);
  Bus bus(*loop, Bus::Kind::session, timing);
  const BusListening connection = bus.watchConnection([](bool) {});
  EXPECT_EQ(bus.connect(), -ETIMEDOUT);
  // Attempts go on, one at a time, and the loop stays free meanwhile.
  int turns = 0;
  const auto timer = loop->scheduleRepeating(tidewell::Seconds(0.01), [&] { ++turns; });
  int attempts = 0;
  EXPECT_TRUE(eventually([&] {
    attempts += silent.connectionsMade();
    return attempts >= 4;
  }));
  EXPECT_GE(turns, 20);
}

TEST_F(BusTest, MayBeDestroyedWhileCallsAndListenersAreOutstanding) {
  EchoService service(sessionDaemon->address());
  service.isSilent = true;
  ASSERT_EQ(sessionBus->connect(), 0);
  const BusListening watch = sessionBus->watchName("test.Echo", [](bool) {});
  const BusListening connection = sessionBus->watchConnection([](bool) {});
  const BusSlot call = sessionBus->callAsync(kEcho, {}, [](const BusReply&) {});
  sessionBus.reset();
  runBriefly(*loop);
}

}  // namespace
}  // namespace platform
