// What another user of the machine can do with messages that are addressed to the program.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Bus/BusObject.h"
#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Power/UPowerSources.h"
#include "Platform/Linux/Sleep/LogindSleepNotifications.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/FakePropertyService.h"
#include "Tests/Platform/Support/Stranger.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kUPower = "org.freedesktop.UPower";
constexpr const char* kUPowerPath = "/org/freedesktop/UPower";

/// A system bus with its usual policy, and a stranger on it.
class ForgedMessagesTest : public BusTest {
 protected:
  ForgedMessagesTest() { systemPolicy = PrivateBus::Policy::system; }

  void SetUp() override {
    if (const auto obstacle = Stranger::obstacle()) GTEST_SKIP() << *obstacle;
    BusTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(systemBus->connect(), 0);
    me = uniqueName(*systemBus);
  }

  /// Lets the stranger act, and then lets the program handle the messages that arrived.
  void strangerActs(const std::function<bool(sd_bus*)>& act) {
    ASSERT_TRUE(Stranger::acts(systemDaemon->address(), act));
    handleEverything(*loop, *systemBus);
  }

  /// Lets the stranger send the same signal many times.
  template <class... Arguments>
  void strangerSends(const char* path, const char* interface, const char* member, const char* types,
                     Arguments... arguments) {
    strangerActs([=, this](sd_bus* bus) {
      for (int count = 0; count < 100; ++count) {
        if (!Stranger::sendSignal(bus, me, path, interface, member, types, arguments...))
          return false;
      }
      return true;
    });
  }

  std::string me;
};

TEST_F(ForgedMessagesTest, SleepAndWakeAreBelievedOnlyFromLogind) {
  FakeLogind logind(systemDaemon->address());
  LogindSleepNotifications notifications(*systemBus, *loop);
  std::string log;
  notifications.observe([&] { log += "sleep "; }, [&] { log += "wake "; });
  handleEverything(*loop, *systemBus);
  strangerSends("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                1);
  EXPECT_EQ(log, "");
  EXPECT_EQ(logind.held().size(), 1U);
  strangerSends("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                0);
  EXPECT_EQ(log, "");
  EXPECT_EQ(logind.granted().size(), 1U);
  logind.announceSleep(true);
  EXPECT_TRUE(eventually([&] { return log == "sleep "; }));
}

TEST_F(ForgedMessagesTest, TheEndOfAServiceIsBelievedOnlyFromTheBus) {
  FakeLogind logind(systemDaemon->address());
  std::string log;
  const BusListening watch =
      systemBus->watchName(kLogind, [&](bool owned) { log += owned ? "+" : "-"; });
  handleEverything(*loop, *systemBus);
  ASSERT_EQ(log, "+");
  strangerSends("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged", "sss", kLogind,
                ":1.0", "");
  EXPECT_EQ(log, "+");
  EXPECT_TRUE(systemBus->nameStatus(kLogind).isOwned());
}

TEST_F(ForgedMessagesTest, ANewOwnerOfANameIsBelievedOnlyFromTheBus) {
  FakeLogind logind(systemDaemon->address());
  int heard = 0;
  const BusListening subscription = systemBus->subscribe(
      {kLogind, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep"},
      [&](sd_bus_message*) { ++heard; });
  handleEverything(*loop, *systemBus);
  strangerActs([this](sd_bus* bus) {
    const char* own = nullptr;
    return sd_bus_get_unique_name(bus, &own) >= 0 &&
           Stranger::sendSignal(bus, me, "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                "NameOwnerChanged", "sss", kLogind, ":1.0", own) &&
           Stranger::sendSignal(bus, me, "/org/freedesktop/login1",
                                "org.freedesktop.login1.Manager", "PrepareForSleep", "b", 1);
  });
  EXPECT_EQ(heard, 0);
}

TEST_F(ForgedMessagesTest, AChangedPropertyIsBelievedOnlyFromItsService) {
  FakePropertyService service(systemDaemon->address(), kUPower);
  service.set(kUPowerPath, kUPower, {{"OnBattery", false}});
  RemoteProperties properties(*systemBus, kUPower, kUPowerPath, kUPower, {"OnBattery"});
  ASSERT_NE(properties.read(), nullptr);
  handleEverything(*loop, *systemBus);
  strangerSends(kUPowerPath, "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                kUPower, 1, "OnBattery", "b", 1, 0);
  EXPECT_EQ(properties.read()->at("OnBattery"), tidewell::PropertyValue(false));
  strangerSends(kUPowerPath, "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                kUPower, 0, 1, "OnBattery");
  EXPECT_EQ(service.readings, 1);
}

TEST_F(ForgedMessagesTest, ASignalOfOneServiceChangesNothingForAnother) {
  FakePropertyService upower(systemDaemon->address(), kUPower);
  upower.set(kUPowerPath, kUPower, {{"OnBattery", false}});
  FakePropertyService other(systemDaemon->address(), "test.Other");
  RemoteProperties properties(*systemBus, kUPower, kUPowerPath, kUPower, {"OnBattery"});
  RemoteProperties others(*systemBus, "test.Other", kUPowerPath, kUPower, {"OnBattery"});
  ASSERT_NE(properties.read(), nullptr);
  ASSERT_NE(others.read(), nullptr);
  other.change(kUPowerPath, kUPower, "OnBattery", true);
  EXPECT_TRUE(eventually([&] { return others.read()->contains("OnBattery"); }));
  EXPECT_EQ(properties.read()->at("OnBattery"), tidewell::PropertyValue(false));
}

TEST_F(ForgedMessagesTest, AForgedDisconnectedSignalDoesNotEndTheConnection) {
  std::string log;
  const BusListening watch =
      systemBus->watchConnection([&](bool connected) { log += connected ? "+" : "-"; });
  handleEverything(*loop, *systemBus);
  Stranger::acts(systemDaemon->address(), [this](sd_bus* bus) {
    return Stranger::sendSignal(bus, me, "/org/freedesktop/DBus/Local",
                                "org.freedesktop.DBus.Local", "Disconnected", "");
  });
  handleEverything(*loop, *systemBus);
  EXPECT_EQ(log, "+");
  EXPECT_NE(systemBus->handle(), nullptr);
}

/// Sends `to` a reply to each of its first calls, whoever was called.
bool answerEverything(sd_bus* bus, const std::string& to) {
  for (std::uint64_t number = 1; number < 200; ++number) {
    // sd-bus makes a reply only to a call, so the stranger makes up a call.
    sd_bus_message* call = nullptr;
    sd_bus_message* reply = nullptr;
    const bool isSent =
        sd_bus_message_new_method_call(bus, &call, to.c_str(), "/", "test.Silent", "Ask") >= 0 &&
        sd_bus_message_set_sender(call, to.c_str()) >= 0 &&
        sd_bus_message_seal(call, number, 0) >= 0 &&
        sd_bus_message_new_method_return(call, &reply) >= 0 &&
        sd_bus_send_to(bus, reply, to.c_str(), nullptr) >= 0;
    sd_bus_message_unref(call);
    sd_bus_message_unref(reply);
    if (!isSent) return false;
  }
  return true;
}

TEST_F(ForgedMessagesTest, AReplyThatAnotherProgramForgedDoesNotArrive) {
  BusService silent(systemDaemon->address(), {"test.Silent"}, [](sd_bus_message*) {});
  int answers = 0;
  const BusSlot question = systemBus->callAsync({"test.Silent", "/", "test.Silent", "Ask"}, {},
                                                [&](const BusReply&) { ++answers; });
  handleEverything(*loop, *systemBus);
  strangerActs([this](sd_bus* bus) { return answerEverything(bus, me); });
  EXPECT_EQ(answers, 0);
}

class CarelessBusTest : public ForgedMessagesTest {
 protected:
  CarelessBusTest() { systemPolicy = PrivateBus::Policy::careless; }
};

TEST_F(CarelessBusTest, AReplyFromAnotherProgramIsAnError) {
  BusService silent(systemDaemon->address(), {}, [](sd_bus_message*) {});
  std::string whom;
  silent.perform([&](sd_bus* bus) {
    const char* name = nullptr;
    if (sd_bus_get_unique_name(bus, &name) >= 0) whom = name;
  });
  std::vector<int> errors;
  const BusSlot question =
      systemBus->callAsync({whom.c_str(), "/", "test.Silent", "Ask"}, {},
                           [&](const BusReply& reply) { errors.push_back(reply.error); });
  handleEverything(*loop, *systemBus);
  strangerActs([this](sd_bus* bus) { return answerEverything(bus, me); });
  EXPECT_EQ(errors, std::vector<int>{-EBADMSG});
}

/// Sends a signal with a number, and waits until the bus has it.
void say(sd_bus* bus, int number) {
  sd_bus_emit_signal(bus, "/", "test.Speaker", "Said", "i", number);
  askTheBus(bus);
}

class SignalSenderTest : public BusTest {
 protected:
  BusListening listen() {
    return systemBus->subscribe({"test.Speaker", "/", "test.Speaker", "Said"},
                                [this](sd_bus_message* message) {
                                  int number = 0;
                                  sd_bus_message_read(message, "i", &number);
                                  heard.push_back(number);
                                });
  }
  std::unique_ptr<BusService> speaker() {
    return std::make_unique<BusService>(systemDaemon->address(), std::vector<std::string>{},
                                        [](sd_bus_message*) {});
  }

  std::vector<int> heard;
};

TEST_F(SignalSenderTest, IsBelievedFromItsFirstSignalAfterItTookTheName) {
  ASSERT_EQ(systemBus->connect(), 0);
  const BusListening listening = listen();
  handleEverything(*loop, *systemBus);
  std::vector<int> all;
  // The loop does not run between the change of the owner and the first signal of the new owner.
  for (int restart = 0; restart < 20; ++restart) {
    const auto service = speaker();
    service->perform([restart](sd_bus* bus) {
      sd_bus_request_name(bus, "test.Speaker", 0);
      say(bus, restart);
    });
    all.push_back(restart);
  }
  handleEverything(*loop, *systemBus);
  EXPECT_EQ(heard, all);
}

TEST_F(SignalSenderTest, IsBelievedFromItsFirstSignalAfterTheSubscription) {
  const auto service = speaker();
  service->perform([](sd_bus* bus) { sd_bus_request_name(bus, "test.Speaker", 0); });
  ASSERT_EQ(systemBus->connect(), 0);
  const BusListening listening = listen();
  // By now the bus has handled the subscription, and the program has read none of the replies to
  // it.
  ASSERT_EQ(systemBus->nameStatus("test.Other").state, NameStatus::State::free);
  service->perform([](sd_bus* bus) { say(bus, 1); });
  handleEverything(*loop, *systemBus);
  EXPECT_EQ(heard, std::vector<int>{1});
}

TEST_F(SignalSenderTest, IsBelievedEvenIfTheBusStoodStillDuringTheSubscription) {
  const auto service = speaker();
  service->perform([](sd_bus* bus) { sd_bus_request_name(bus, "test.Speaker", 0); });
  ASSERT_EQ(systemBus->connect(), 0);
  // The bus stands still for longer than sd-bus waits for an answer.
  ASSERT_GE(sd_bus_set_method_call_timeout(systemBus->handle(), 1), 0);
  systemDaemon->freeze();
  const BusListening listening = listen();
  bool isTooLate = false;
  const auto givenUp = [](sd_bus_message*, void* data, sd_bus_error*) {
    *static_cast<bool*>(data) = true;
    return 0;
  };
  sd_bus_slot* question = nullptr;
  sd_bus_call_method_async(systemBus->handle(), &question, "org.freedesktop.DBus",
                           "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", givenUp,
                           &isTooLate, nullptr);
  const BusSlot slot(question);
  EXPECT_TRUE(eventually([&] { return isTooLate; }));
  systemDaemon->thaw();
  handleEverything(*loop, *systemBus);
  service->perform([](sd_bus* bus) { say(bus, 1); });
  handleEverything(*loop, *systemBus);
  EXPECT_EQ(heard, std::vector<int>{1});
}

TEST_F(SignalSenderTest, IsNotBelievedBeforeItHasTheNameOrAfterItGaveTheNameUp) {
  ASSERT_EQ(systemBus->connect(), 0);
  const std::string me = uniqueName(*systemBus);
  const BusListening listening = listen();
  const auto service = speaker();
  const auto sayToMe = [&me](sd_bus* bus, int number) {
    Stranger::sendSignal(bus, me, "/", "test.Speaker", "Said", "i", number);
  };
  service->perform([&](sd_bus* bus) {
    sayToMe(bus, 1);
    sd_bus_request_name(bus, "test.Speaker", 0);
    sayToMe(bus, 2);
    sd_bus_release_name(bus, "test.Speaker");
    sayToMe(bus, 3);
    sd_bus_request_name(bus, "test.Speaker", 0);
    sayToMe(bus, 4);
    askTheBus(bus);
  });
  handleEverything(*loop, *systemBus);
  EXPECT_EQ(heard, (std::vector<int>{2, 4}));
}

/// An object with one method, on a session bus that lets everybody in.
class CalledByStrangersTest : public BusTest {
 protected:
  CalledByStrangersTest() { sessionPolicy = PrivateBus::Policy::everybody; }

  void SetUp() override {
    if (const auto obstacle = Stranger::obstacle()) GTEST_SKIP() << *obstacle;
    BusTest::SetUp();
    if (IsSkipped()) return;
    object.emplace(*sessionBus, BusObject::Place{"/object", "test.Object"}, kTable, this);
    me = uniqueName(*sessionBus);
    object->offer();
  }

  static int called(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
    ++static_cast<CalledByStrangersTest*>(data)->calls;
    return sd_bus_reply_method_return(call, "");
  }
  static const sd_bus_vtable kTable[];

  std::optional<BusObject> object;
  std::string me;
  int calls = 0;
};

const sd_bus_vtable CalledByStrangersTest::kTable[] = {
    SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Call", "", "", called, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

TEST_F(CalledByStrangersTest, AnswersItsOwnUser) {
  BusService friendly(sessionDaemon->address(), {}, [](sd_bus_message*) {});
  for (int count = 1; count <= 3; ++count) {
    friendly.perform([this](sd_bus* bus) {
      sd_bus_call_method_async(bus, nullptr, me.c_str(), "/object", "test.Object", "Call", nullptr,
                               nullptr, "");
    });
    EXPECT_TRUE(eventually([&] { return calls == count; }));
  }
}

TEST_F(CalledByStrangersTest, RefusesAnotherUser) {
  // The stranger is a child process, because the test's own loop must run to answer it.
  const pid_t child = ::fork();
  if (child == 0) {
    sd_bus* bus = Stranger::become() ? Stranger::connect(sessionDaemon->address()) : nullptr;
    bool isRefused = bus != nullptr;
    for (const auto& [interface, member] :
         {std::pair{"test.Object", "Call"},
          std::pair{"org.freedesktop.DBus.Introspectable", "Introspect"},
          std::pair{"org.freedesktop.DBus.Peer", "Ping"}}) {
      sd_bus_error error{};
      isRefused = isRefused &&
                  sd_bus_call_method(bus, me.c_str(), "/object", interface, member, &error, nullptr,
                                     "") == -EACCES &&
                  sd_bus_error_has_name(&error, SD_BUS_ERROR_ACCESS_DENIED) > 0;
    }
    ::_exit(isRefused ? 0 : 1);
  }
  int status = -1;
  EXPECT_TRUE(eventually([&] { return ::waitpid(child, &status, WNOHANG) == child; }));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(calls, 0);
}

/// An object of the program, and a new caller.
class NewCallerTest : public BusTest {
 protected:
  enum class Answer { none, given, refused };

  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    BusTiming timing;
    timing.now = [this] { return now; };
    pause = timing.firstPause;
    bus.emplace(*loop, Bus::Kind::session, timing);
    object.emplace(*bus, BusObject::Place{"/object", "test.Object"}, kNewCallersTable, nullptr);
    me = uniqueName(*bus);
    object->offer();
    caller.emplace(sessionDaemon->address(), std::vector<std::string>{}, [](sd_bus_message*) {});
  }

  void call() {
    answer = Answer::none;
    caller->perform([this](sd_bus* connection) {
      sd_bus_call_method_async(connection, nullptr, me.c_str(), "/object", "test.Object", "Call",
                               told, this, "");
      askTheBus(connection);
    });
  }
  static int told(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    const bool isRefused = sd_bus_message_is_method_error(reply, SD_BUS_ERROR_ACCESS_DENIED) > 0;
    static_cast<NewCallerTest*>(data)->answer = isRefused ? Answer::refused : Answer::given;
    return 0;
  }
  static int called(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
    return sd_bus_reply_method_return(call, "");
  }
  static const sd_bus_vtable kNewCallersTable[];

  BusTiming::Point now{};
  BusTiming::Span pause{};
  std::optional<Bus> bus;
  std::optional<BusObject> object;
  std::string me;
  std::atomic<Answer> answer = Answer::none;
  std::optional<BusService> caller;
};

const sd_bus_vtable NewCallerTest::kNewCallersTable[] = {
    SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Call", "", "", called, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

TEST_F(NewCallerTest, IsRefusedWithoutAQuestionWhenTheBusDidNotAnswerTheLastOne) {
  call();
  // By now the call has arrived, but the program has not looked at it.
  ASSERT_EQ(bus->nameStatus("test.Other").state, NameStatus::State::free);
  sessionDaemon->freeze();
  while (sd_bus_process(bus->handle(), nullptr) > 0) {
  }
  sessionDaemon->thaw();
  EXPECT_TRUE(eventually([this] { return answer != Answer::none; }));
  EXPECT_EQ(answer, Answer::refused);
  call();
  EXPECT_TRUE(eventually([this] { return answer != Answer::none; }));
  EXPECT_EQ(answer, Answer::refused);
  now += pause;
  call();
  EXPECT_TRUE(eventually([this] { return answer != Answer::none; }));
  EXPECT_EQ(answer, Answer::given);
}

}  // namespace
}  // namespace platform
