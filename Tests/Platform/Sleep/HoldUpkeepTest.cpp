// Tests a hold over time: new names, late grants, and lists that are read back.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Sleep/SleepInhibitors.h"
#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using std::chrono::seconds;

/// The inhibitors with a loop and a clock that the test controls.
class HoldUpkeepTest : public SleepTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    inhibitors =
        std::make_unique<SleepInhibitors>(*systemBus, *sessionBus, timers, [this] { return now; });
  }

  /// Lets time pass, second by second, and does the work that is due and what the buses bring.
  void pass(seconds time) {
    for (seconds passed{0}; passed < time; ++passed) {
      now += seconds(1);
      timers.fireTimers();
    }
    runBriefly(*loop);
  }
  /// Handles the news of all services that are there by now, so that none seems to come later.
  void hearOfServices() {
    // The bus delivers in order. When its answer is here, everything that it sent before is here
    // too.
    sessionBus->call(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"});
    while (sd_event_run(loop->handle(), 0) > 0) {
    }
  }

  /// Makes `service` grant what it left unanswered, and waits until that has set a new timer.
  void hearLateAnswer(FakeSessionService& service) {
    // The first news of the services sets the timer as well.
    runBriefly(*loop);
    const auto before = timers.timers.size();
    service.answerLate();
    ASSERT_TRUE(eventually([&] { return timers.timers.size() > before; }));
  }
  /// Each live assertion, with each service that keeps it.
  Lines kept() {
    Lines lines;
    for (const auto& live : inhibitors->liveAssertions()) {
      if (live.grants.empty()) lines.push_back(live.name + ": nobody");
      for (const auto& grant : live.grants)
        lines.push_back(live.name + ": " + grant.service + (grant.seenAt ? " seen" : ""));
    }
    return lines;
  }
  int count(const std::string& line) {
    const Lines lines = ports.log.lines();
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
  }

  tidewell::FakeMainLoop timers;
};

// New names.

TEST_F(HoldUpkeepTest, RenamesAtOnceWhenTheLastChangeIsOld) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  EXPECT_EQ(gnome->log().at(1), "Inhibit com.staylit.app|b|4");
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|b|block"}; }));
}

TEST_F(HoldUpkeepTest, WaitsWithANewNameUntilTheLastChangeIsFiveSecondsOld) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  inhibitors->setAssertionName(creation.id, "b");
  pass(seconds(2));
  inhibitors->setAssertionName(creation.id, "c");
  pass(seconds(2));
  EXPECT_EQ(logind->granted(), Lines{"idle|Staylit|a|block"});
  pass(seconds(1));
  EXPECT_EQ(logind->granted(), (Lines{"idle|Staylit|a|block", "idle|Staylit|c|block"}));
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|c|block"}; }));
}

TEST_F(HoldUpkeepTest, AsksForNothingWhenTheOldNameIsBackByThen) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  inhibitors->setAssertionName(creation.id, "b");
  inhibitors->setAssertionName(creation.id, "a");
  pass(seconds(10));
  EXPECT_EQ(logind->granted(), Lines{"idle|Staylit|a|block"});
}

TEST_F(HoldUpkeepTest, ForgetsAWaitingNameOnRelease) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  inhibitors->setAssertionName(creation.id, "b");
  inhibitors->releaseAssertion(creation.id);
  pass(seconds(10));
  EXPECT_EQ(logind->granted(), Lines{"idle|Staylit|a|block"});
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
}

TEST_F(HoldUpkeepTest, IsHeldAllTheTimeWhileTheNameChangesEverySecond) {
  const auto power = sessionService(kPowerManagement);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "0");
  for (int second = 1; second <= 40; ++second) {
    inhibitors->setAssertionName(creation.id, std::to_string(second));
    now += seconds(1);
    timers.fireTimers();
    const Lines held = power->held();
    ASSERT_FALSE(held.empty());
    EXPECT_LE(second - std::stoi(held.back()), 10) << "the last name is an old one";
    // The other entries are kept because the last one may not be heeded yet.
    EXPECT_LE(second - std::stoi(held.front()), 16);
  }
  EXPECT_FALSE(power->hadAGap());
  EXPECT_EQ(logind->granted().size(), 9U) << "one in five seconds";
  pass(seconds(20));
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"40"}; }));
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|40|block"}; }));
}

TEST_F(HoldUpkeepTest, KeepsTheOldGrantUntilPowerDevilHeedsTheNewOne) {
  const auto power = sessionService(kPowerManagement);
  const auto creation = create(kSystem, "a");
  now += seconds(60);
  inhibitors->setAssertionName(creation.id, "b");
  pass(seconds(5));
  EXPECT_EQ(power->held(), (Lines{"a", "b"}));
  inhibitors->setAssertionName(creation.id, "c");
  EXPECT_EQ(power->held(), (Lines{"a", "b", "c"})) << "b may not be heeded yet";
  pass(seconds(1));
  EXPECT_TRUE(eventually([&] { return power->held() == (Lines{"b", "c"}); }));
  pass(seconds(5));
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"c"}; }));
  EXPECT_FALSE(power->hadAGap());
}

TEST_F(HoldUpkeepTest, GivesBackTheOldAndTheNewGrantOnRelease) {
  const auto power = sessionService(kPowerManagement);
  const auto creation = create(kSystem, "a");
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return power->held().empty(); }));
}

TEST_F(HoldUpkeepTest, GivesBackLogindsIdleLockWhenPowerDevilHeedsTheHold) {
  const auto logind = fakeLogind();
  create(kSystem, "a");
  const auto solid = sessionService(kSolid);
  const auto power = sessionService(kPowerManagement);
  ASSERT_TRUE(eventually([&] { return power->held() == Lines{"a"}; }));
  pass(seconds(3));
  EXPECT_LE(timers.timers.back()->interval, seconds(3)) << "it comes back in time";
  pass(seconds(2));
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
  pass(seconds(1));
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
  EXPECT_EQ(power->held(), Lines{"a"});
}

// Refusals and late grants.

TEST_F(HoldUpkeepTest, AsksAServiceThatHasNotAgreedAgainAfterAWhile) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  gnome->refuses = true;
  create(kSystem, "a");
  gnome->refuses = false;
  pass(seconds(3));
  EXPECT_EQ(gnome->held(), Lines{"a"});
  EXPECT_EQ(logind->granted(), Lines{"idle|Staylit|a|block"});
}

TEST_F(HoldUpkeepTest, AsksAServiceThatGoesOnRefusingLessAndLessOften) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  gnome->refuses = true;
  create(kSystem, "a");
  // A service that appears is asked at once.
  ASSERT_TRUE(eventually([&] { return gnome->refusals == 2; }));
  pass(seconds(300));
  // The pauses are 3, 6, 12, 24 and 48 seconds, and then always 60 seconds.
  EXPECT_EQ(gnome->refusals, 2 + 5 + 3);
  gnome->refuses = false;
  pass(seconds(60));
  EXPECT_EQ(gnome->held(), Lines{"a"});
}

TEST_F(HoldUpkeepTest, TriesANewNameAgainWhenNobodyAnswered) {
  const auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "a");
  now += kPause;
  gnome->isSilent = true;
  inhibitors->setAssertionName(creation.id, "b");
  EXPECT_EQ(gnome->held(), Lines{"a"});
  gnome->forgetCalls();
  gnome->isSilent = false;
  runBriefly(*loop);
  pass(seconds(3));
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"b"}; }));
  EXPECT_FALSE(gnome->hadAGap());
}

TEST_F(HoldUpkeepTest, TriesANewNameAgainWhenItWasRefused) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  now += kPause;
  logind->refuses = true;
  inhibitors->setAssertionName(creation.id, "b");
  logind->refuses = false;
  pass(seconds(3));
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{"idle|Staylit|b|block"}; }));
}

TEST_F(HoldUpkeepTest, KeepsAHeededGrantWhenAnotherComesLate) {
  const auto power = sessionService(kPowerManagement);
  const auto creation = create(kSystem, "a");
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  now += kPause;
  power->isSilent = true;
  inhibitors->setAssertionName(creation.id, "c");
  hearLateAnswer(*power);
  EXPECT_EQ(power->held(), (Lines{"a", "b", "c"}));
  pass(seconds(5));
  EXPECT_EQ(power->held(), (Lines{"b", "c"})) << "b is heeded, c is not yet";
  pass(seconds(1));
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"c"}; }));
  EXPECT_FALSE(power->hadAGap());
}

TEST_F(HoldUpkeepTest, GivesBackAtOnceAGrantThatComesTooLate) {
  const auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "a");
  now += kPause;
  gnome->isSilent = true;
  inhibitors->setAssertionName(creation.id, "b");
  inhibitors->setAssertionName(creation.id, "a");
  gnome->answerLate();
  EXPECT_TRUE(eventually([&] { return gnome->log().back() == "Uninhibit 2"; }));
  EXPECT_EQ(gnome->held(), Lines{"a"});
}

TEST_F(HoldUpkeepTest, KeepsAGrantUnderAFormerNameWhenThereIsNoOther) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  hearOfServices();
  gnome->isSilent = true;
  const auto creation = create(kSystem, "a");
  inhibitors->setAssertionName(creation.id, "b");
  hearLateAnswer(*gnome);
  EXPECT_EQ(gnome->held(), Lines{"a"});
  pass(kPause);
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"b"}; }));
  EXPECT_FALSE(gnome->hadAGap());
}

TEST_F(HoldUpkeepTest, AsksAgainAtOnceWhenALateAnswerShowsThatTheServiceWorks) {
  const auto gnome = sessionService(kGnome);
  const auto creation = create(kSystem, "a");
  now += kPause;
  gnome->isSilent = true;
  inhibitors->setAssertionName(creation.id, "b");
  inhibitors->setAssertionName(creation.id, "c");
  gnome->answerLate();
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"c"}; }));
  EXPECT_FALSE(gnome->hadAGap());
}

TEST_F(HoldUpkeepTest, AsksASessionWhoseBusStoodStillAtTheStartAfterAWhile) {
  const auto logind = fakeLogind();
  const auto gnome = sessionService(kGnome);
  sessionDaemon->freeze();
  ASSERT_EQ(create(kSystem, "a").code, 0);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
  sessionDaemon->thaw();
  EXPECT_TRUE(eventually([&] {
    pass(seconds(10));
    return gnome->held() == Lines{"a"};
  }));
}

// Reading back.

constexpr const char* kLogindLost =
    "error: org.freedesktop.login1 no longer lists the hold that it granted: it is taken again";

TEST_F(HoldUpkeepTest, TakesALockAgainThatLogindNoLongerLists) {
  const auto logind = fakeLogind();
  create(kSystem, "a");
  logind->forget();
  pass(seconds(2));
  EXPECT_EQ(logind->listings, 0);
  pass(seconds(1));
  EXPECT_TRUE(eventually([&] { return logind->granted().size() == 2; }));
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
  EXPECT_EQ(count(kLogindLost), 1);
  pass(seconds(60));
  EXPECT_EQ(logind->granted().size(), 2U) << "it is listed now";
}

TEST_F(HoldUpkeepTest, ReadsBackOnceAMinuteWhileNothingChanges) {
  const auto logind = fakeLogind();
  create(kSystem, "a");
  pass(seconds(3));
  EXPECT_TRUE(eventually([&] { return logind->listings == 1; }));
  pass(seconds(59));
  EXPECT_EQ(logind->listings, 1);
  pass(seconds(1));
  EXPECT_TRUE(eventually([&] { return logind->listings == 2; }));
  EXPECT_EQ(logind->granted(), Lines{"idle|Staylit|a|block"});
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ReadsBackHalfAMinuteApartHoweverOftenTheNameChanges) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "0");
  for (int second = 1; second <= 100; ++second) {
    inhibitors->setAssertionName(creation.id, std::to_string(second));
    pass(seconds(1));
  }
  EXPECT_GE(logind->listings, 3);
  EXPECT_LE(logind->listings, 4);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ReadsOneListInHalfAMinuteHoweverManyServicesThereAre) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "0");
  for (int second = 1; second <= 100; ++second) {
    inhibitors->setAssertionName(creation.id, std::to_string(second));
    pass(seconds(1));
  }
  EXPECT_LE(gnome->readings + logind->listings, 4);
  EXPECT_GE(gnome->readings, 1);
  EXPECT_GE(logind->listings, 1);
}

TEST_F(HoldUpkeepTest, AsksTheSessionManagerAFewQuestionsAtATime) {
  const auto gnome = sessionService(kGnome);
  for (int other = 0; other < 20; ++other)
    gnome->grantToAnother("a");
  create(kSystem, "a");
  pass(seconds(3));
  ASSERT_TRUE(eventually([&] { return gnome->questions > 0; }));
  runBriefly(*loop);
  EXPECT_LE(gnome->questions, 16);
  pass(seconds(180));
  gnome->forget();
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"a"}; }));
}

TEST_F(HoldUpkeepTest, RecognisesItsLocksWhenLogindNumbersUsersOtherwise) {
  const auto logind = fakeLogind();
  logind->ofUser = ::getuid() + 100000;
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_GE(logind->listings, 2);
  EXPECT_EQ(logind->granted().size(), 1U);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ReadsNothingBackAfterTheRelease) {
  const auto logind = fakeLogind();
  inhibitors->releaseAssertion(create(kSystem, "a").id);
  pass(seconds(100));
  EXPECT_EQ(logind->listings, 0);
}

TEST_F(HoldUpkeepTest, TellsTwoHoldsWithTheSameNameApart) {
  const auto logind = fakeLogind();
  create(kSystem, "a");
  create(kDisplay, "a");
  pass(seconds(100));
  EXPECT_EQ(logind->granted().size(), 2U);
  logind->forget();
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return logind->granted().size() == 4; }));
  EXPECT_EQ(logind->held().size(), 2U);
}

TEST_F(HoldUpkeepTest, StopsBelievingAListOnWhichNothingEverAppears) {
  const auto logind = fakeLogind();
  logind->listsNoLocks = true;
  create(kSystem, "a");
  for (const int reading : {1, 2, 3}) {
    pass(seconds(30));
    ASSERT_TRUE(eventually([&] { return logind->listings == reading; }));
    runBriefly(*loop);
  }
  pass(seconds(600));
  EXPECT_EQ(logind->listings, 3);
  EXPECT_EQ(count(kLogindLost), 2);
  EXPECT_EQ(count("error: org.freedesktop.login1 never lists the hold that it grants: its list is "
                  "not asked again"),
            1);
  EXPECT_EQ(logind->held(), Lines{"idle|Staylit|a|block"});
}

TEST_F(HoldUpkeepTest, TellsWhoKeepsAnAssertionAndWhenThatWasLastSeen) {
  const auto gnome = sessionService(kGnome);
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  EXPECT_EQ(kept(), (Lines{"a: org.gnome.SessionManager", "a: org.freedesktop.login1"}));
  const auto begin = now;
  pass(seconds(3));
  ASSERT_TRUE(eventually([&] { return gnome->readings == 1 || logind->listings == 1; }));
  pass(seconds(40));
  ASSERT_TRUE(eventually([&] { return logind->listings == 1 && gnome->readings == 1; }));
  runBriefly(*loop);
  const auto live = inhibitors->liveAssertions();
  ASSERT_EQ(live.size(), 1U);
  EXPECT_EQ(live[0].kind, kSystem);
  for (const auto& grant : live[0].grants) {
    ASSERT_TRUE(grant.seenAt) << grant.service;
    const seconds after = std::chrono::duration_cast<seconds>(*grant.seenAt - begin);
    EXPECT_TRUE(after == seconds(3) || after == seconds(33)) << after.count();
  }
  inhibitors->setAssertionName(creation.id, "b");
  EXPECT_EQ(kept(), (Lines{"b: org.gnome.SessionManager", "b: org.freedesktop.login1"}));
  inhibitors->releaseAssertion(creation.id);
  EXPECT_EQ(kept(), Lines{});
}

TEST_F(HoldUpkeepTest, DoesNotTakeAnOldListForOneThatHasTheNewAssertion) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  pass(seconds(3));
  ASSERT_TRUE(eventually([&] { return kept() == Lines{"a: org.freedesktop.login1 seen"}; }));
  inhibitors->releaseAssertion(creation.id);
  now += seconds(1);
  create(kSystem, "b");
  EXPECT_EQ(kept(), Lines{"b: org.freedesktop.login1"});
}

TEST_F(HoldUpkeepTest, DoesNotTakeAnOldListForOneThatHasTheNewName) {
  const auto logind = fakeLogind();
  const auto creation = create(kSystem, "a");
  pass(seconds(3));
  ASSERT_TRUE(eventually([&] { return kept() == Lines{"a: org.freedesktop.login1 seen"}; }));
  now += kPause;
  inhibitors->setAssertionName(creation.id, "b");
  EXPECT_EQ(kept(), Lines{"b: org.freedesktop.login1"});
  pass(seconds(20));
  EXPECT_EQ(kept(), Lines{"b: org.freedesktop.login1"}) << "lists are read half a minute apart";
  pass(seconds(10));
  EXPECT_TRUE(eventually([&] { return kept() == Lines{"b: org.freedesktop.login1 seen"}; }));
}

TEST_F(HoldUpkeepTest, TellsOfNobodyAfterTheServiceHasGone) {
  auto logind = fakeLogind();
  create(kSystem, "a");
  ASSERT_EQ(kept(), Lines{"a: org.freedesktop.login1"});
  logind.reset();
  EXPECT_TRUE(eventually([&] { return kept() == Lines{"a: nobody"}; }));
}

TEST_F(HoldUpkeepTest, ChangesNothingWhenAServiceIsSilent) {
  const auto logind = fakeLogind();
  create(kSystem, "a");
  logind->isSilent = true;
  pass(seconds(100));
  EXPECT_EQ(logind->granted().size(), 1U);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ChangesNothingForListsOfAnotherType) {
  const auto logind = fakeLogind();
  const auto gnome = sessionService(kGnome);
  logind->listsNonsense = true;
  gnome->listsNonsense = true;
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_GE(logind->listings, 1);
  EXPECT_GE(gnome->readings, 1);
  gnome->listsNonsense = false;
  gnome->tellsNonsense = true;
  pass(seconds(100));
  EXPECT_GE(gnome->questions, 1);
  EXPECT_EQ(logind->granted().size(), 1U);
  EXPECT_EQ(gnome->log().size(), 1U);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ChangesNothingForAPowerServicesAnswerOfAnotherType) {
  const auto power = sessionService(kPowerManagement);
  power->listsNonsense = true;
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_GE(power->readings, 1);
  EXPECT_EQ(power->log().size(), 1U);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, ChangesNothingForAPolicyAgentsListOfAnotherType) {
  const auto solid = sessionService(kSolid);
  const auto power = sessionService(kPowerManagement);
  std::atomic<int> readings = 0;
  const BusService agent(sessionDaemon->address(), {"org.kde.Solid.PowerManagement.PolicyAgent"},
                         [&](sd_bus_message* call) {
                           ++readings;
                           sd_bus_reply_method_return(call, "as", 1, "a");
                         });
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_GE(readings, 1);
  EXPECT_EQ(power->log().size(), 1U);
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, MissesNothingWhenASessionManagerIsTooBusyToTell) {
  const auto gnome = sessionService(kGnome);
  gnome->failsAt = "GetAppId";
  create(kSystem, "a");
  pass(seconds(3));
  ASSERT_TRUE(eventually([&] { return gnome->readings == 1; }));
  runBriefly(*loop);
  gnome->failsAt = "GetReason";
  pass(seconds(60));
  ASSERT_TRUE(eventually([&] { return gnome->readings == 2; }));
  runBriefly(*loop);
  gnome->failsAt = "";
  pass(seconds(120));
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|a|4"});
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(HoldUpkeepTest, TakesAHoldAgainThatTheSessionManagerNoLongerLists) {
  const auto gnome = sessionService(kGnome);
  gnome->grantToAnother("a");
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_EQ(gnome->log(), Lines{"Inhibit com.staylit.app|a|4"});
  EXPECT_GE(gnome->readings, 2);
  gnome->forget();
  gnome->grantToAnother("a");
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"a"}; }));
  EXPECT_EQ(count("error: org.gnome.SessionManager no longer lists the hold that it granted: it is "
                  "taken again"),
            1);
}

TEST_F(HoldUpkeepTest, ReadsTheListOfASessionManagerWithProperties) {
  const auto gnome = sessionService(kGnome);
  gnome->tellsByProperties = true;
  gnome->grantToAnother("b");
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_EQ(gnome->log().size(), 1U);
  gnome->forget();
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return gnome->held() == Lines{"a"}; }));
}

TEST_F(HoldUpkeepTest, AsksXfceWhetherAnybodyHoldsAnything) {
  const auto power = sessionService(kPowerManagement);
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_EQ(power->log().size(), 1U);
  EXPECT_GE(power->readings, 1);
  power->forget();
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"a"}; }));
}

TEST_F(HoldUpkeepTest, ReadsThePolicyAgentsListOnKde) {
  const auto solid = sessionService(kSolid);
  const auto power = sessionService(kPowerManagement);
  const BusService agent(sessionDaemon->address(), {"org.kde.Solid.PowerManagement.PolicyAgent"},
                         [&](sd_bus_message* call) {
                           sd_bus_message* reply = nullptr;
                           sd_bus_message_new_method_return(call, &reply);
                           sd_bus_message_open_container(reply, 'a', "(ss)");
                           sd_bus_message_append(reply, "(ss)", "Somebody", "a");
                           for (const std::string& reason : power->held())
                             sd_bus_message_append(reply, "(ss)", "Staylit", reason.c_str());
                           sd_bus_message_close_container(reply);
                           sd_bus_message_send(reply);
                           sd_bus_message_unref(reply);
                         });
  create(kSystem, "a");
  pass(seconds(100));
  EXPECT_EQ(power->log().size(), 1U);
  power->forget();
  pass(seconds(60));
  EXPECT_TRUE(eventually([&] { return power->held() == Lines{"a"}; }));
}

}  // namespace
}  // namespace platform
