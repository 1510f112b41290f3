#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Staylit/StatusPrinter.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::PowerState;
using tidewell::Seconds;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;

class EngineTest : public testing::Test {
 protected:
  void SetUp() override { fakes.defaults.stored["sustainSeconds"] = Integer{1}; }

  /// From now on the process uses this share of a core before each `tickAfter`.
  void work(std::int32_t pid, const std::string& name, double cpuPercent) {
    fakes.processes.add(pid, "/opt/" + name);
    workers.push_back({pid, cpuPercent});
  }

  void stopWork() { workers.clear(); }

  /// From now on, an application of this name keeps the machine awake by itself.
  void assertOwn(std::int32_t pid, const std::string& name) {
    fakes.assertions.hold(pid, "PreventUserIdleSystemSleep");
    fakes.applications.add(pid, std::nullopt, name);
  }

  void tickAfter(Seconds interval) {
    for (const Worker& worker : workers) {
      const double nanos = worker.cpuPercent / 100 * interval.count() * 1e9;
      fakes.processes.at(worker.pid).usage.userTime += static_cast<std::uint64_t>(nanos);
    }
    fakes.clock.advance(interval);
    engine->tick();
  }

  /// Ticks until the work has lasted for the sustain time.
  void tickUntilBusy() {
    for (int times = 0; times < 3; ++times)
      tickAfter(2s);
    fakes.calls->clear();
  }

  void setBattery(Integer charge) { fakes.powerSources.setBattery(charge); }

  EngineStatus status() { return engine->status().get(); }

  struct Worker {
    std::int32_t pid;
    double cpuPercent;
  };

  tidewell::FakePorts fakes;
  std::vector<Worker> workers;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
};

// Creation and start.

TEST_F(EngineTest, BeginsIdleAndUnpausedWithNothingBusy) {
  EXPECT_EQ(status(), EngineStatus::idle());
  EXPECT_TRUE(engine->busyApps().get().empty());
  EXPECT_TRUE(engine->assertingApps().get().empty());
  EXPECT_FALSE(engine->isPaused());
}

TEST(Engine, ReadsThePowerStateWhenItIsMadeAndStartsNothing) {
  tidewell::FakePorts fakes;
  fakes.powerSources.setBattery(45);
  StaylitEngine engine(fakes.ports);
  EXPECT_EQ(engine.powerState().get(), (PowerState{false, 45, false, true}));
  EXPECT_TRUE(fakes.mainLoop.timers.empty());
  EXPECT_EQ(fakes.sleepNotifications.observers(), 0U);
  EXPECT_EQ(fakes.calls->count("list processes"), 0U);
  EXPECT_TRUE(fakes.power.calls.empty());
}

TEST_F(EngineTest, StartsByObservingSleepThenTheTimerThenATick) {
  const Texts inOrder = {"observe sleep and wake", "schedule timer", "set timer tolerance",
                         "read Low Power Mode", "list processes"};
  fakes.calls->clear();
  engine->start();
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  EXPECT_EQ(status(), EngineStatus::winding(120));
}

TEST_F(EngineTest, TicksEveryTwoSecondsGiveOrTakeHalfASecond) {
  engine->start();
  ASSERT_EQ(fakes.mainLoop.timers.size(), 1U);
  EXPECT_EQ(fakes.mainLoop.timers[0]->interval, 2s);
  EXPECT_EQ(fakes.mainLoop.timers[0]->tolerance, 0.5s);
  EXPECT_TRUE(fakes.mainLoop.timers[0]->valid);
}

TEST_F(EngineTest, ItsTimerHopsOntoTheMainLoopBeforeItTicks) {
  engine->start();
  fakes.calls->clear();
  fakes.mainLoop.fireTimers();
  EXPECT_EQ(fakes.calls->count("list processes"), 0U);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->count("list processes"), 1U);
}

TEST_F(EngineTest, ItsTimerDoesNothingOnceTheEngineIsGone) {
  engine->start();
  const auto action = fakes.mainLoop.timers[0]->action;
  engine.reset();
  fakes.calls->clear();
  action();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(EngineTest, ATickThatWasPostedDoesNothingOnceTheEngineIsGone) {
  engine->start();
  fakes.mainLoop.fireTimers();
  engine.reset();
  fakes.calls->clear();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(EngineTest, NoLongerTicksByItselfOnceItsTimerIsStopped) {
  engine->stopTimer();
  engine->start();
  engine->stopTimer();
  fakes.calls->clear();
  fakes.mainLoop.fireTimers();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->count("list processes"), 0U);
  EXPECT_FALSE(fakes.mainLoop.timers[0]->valid);
}

// Publishing.

TEST_F(EngineTest, PublishesAllFourOnEveryTickInThisOrderThoughNothingChanges) {
  Texts told;
  const Subscription power =
      engine->powerState().observe([&](const auto&) { told.push_back("power"); });
  const Subscription busy =
      engine->busyApps().observe([&](const auto&) { told.push_back("busy"); });
  const Subscription asserting =
      engine->assertingApps().observe([&](const auto&) { told.push_back("asserting"); });
  const Subscription state =
      engine->status().observe([&](const auto&) { told.push_back("status"); });
  engine->tick();
  EXPECT_EQ(told, (Texts{"power", "busy", "asserting", "status"}));
  engine->tick();
  EXPECT_EQ(told, (Texts{"power", "busy", "asserting", "status", "power", "busy", "asserting",
                         "status"}));
}

TEST_F(EngineTest, TellsItsObserversBeforeTheStatusChanges) {
  std::vector<EngineStatus> old;
  std::vector<EngineStatus> next;
  const Subscription subscription = engine->status().observe([&](const EngineStatus& value) {
    old.push_back(status());
    next.push_back(value);
  });
  engine->tick();
  EXPECT_EQ(old, std::vector<EngineStatus>{EngineStatus::idle()});
  EXPECT_EQ(next, std::vector<EngineStatus>{EngineStatus::winding(120)});
}

TEST_F(EngineTest, HoldsAndReleasesBeforeItPublishesTheStatus) {
  Texts told;
  const Subscription subscription = engine->status().observe([&](const EngineStatus& next) {
    const Texts held = fakes.power.liveNames();
    told.push_back(next.summary() + ": " + (held.empty() ? "nothing" : held.front()));
  });
  work(10, "A", 80);
  tickUntilBusy();
  setBattery(19);
  tickAfter(2s);
  setBattery(80);
  stopWork();
  tickAfter(2s);
  tickAfter(120s);
  engine->setPaused(true);
  engine->setPaused(false);
  engine->setPaused(true);
  EXPECT_EQ(told, (Texts{"Work stopped — releasing in 120s: waiting for work to resume",
                         "Work stopped — releasing in 118s: waiting for work to resume",
                         "Awake for A: A is working", "Not holding — battery below 20%: nothing",
                         "Work stopped — releasing in 120s: waiting for work to resume",
                         "Idle — your Mac can sleep: nothing", "Paused: nothing",
                         "Idle — your Mac can sleep: nothing",
                         "Work stopped — releasing in 120s: waiting for work to resume",
                         "Paused: nothing"}));
}

TEST_F(EngineTest, PublishesWhatItFoundOnATick) {
  work(10, "A", 80);
  assertOwn(500, "C");
  setBattery(60);
  tickUntilBusy();
  EXPECT_EQ(engine->powerState().get(), (PowerState{false, 60, false, true}));
  ASSERT_EQ(engine->busyApps().get().size(), 1U);
  EXPECT_EQ(engine->busyApps().get()[0].display, "A");
  EXPECT_EQ(engine->assertingApps().get(), Texts{"C"});
}

// Quiet passes and the grace period.

TEST_F(EngineTest, TheFirstQuietPassHoldsForTheFullGracePeriod) {
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(120));
  EXPECT_EQ(fakes.power.liveNames(), Texts{"waiting for work to resume"});
}

TEST_F(EngineTest, AGraceOf5IsRaisedTo30) {
  fakes.defaults.stored["graceSeconds"] = Integer{5};
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(30));
  fakes.defaults.stored["graceSeconds"] = Integer{-1};
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(30));
}

TEST_F(EngineTest, AGraceOf10000IsLoweredTo600) {
  fakes.defaults.stored["graceSeconds"] = Integer{10000};
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(600));
}

TEST_F(EngineTest, AGraceWithinItsRangeStaysAsItIs) {
  fakes.defaults.stored["graceSeconds"] = Integer{31};
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(31));
}

TEST_F(EngineTest, QuietFor119AndAHalfSecondsIsWindingWithOneSecondLeft) {
  engine->tick();
  tickAfter(119.5s);
  EXPECT_EQ(status(), EngineStatus::winding(1));
  EXPECT_EQ(fakes.power.live.size(), 1U);
}

TEST_F(EngineTest, QuietFor120SecondsIsIdleAndReleased) {
  engine->tick();
  tickAfter(119.8s);
  EXPECT_EQ(status(), EngineStatus::winding(1));
  tickAfter(0.2s);
  EXPECT_EQ(status(), EngineStatus::idle());
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(fakes.log.lines(), (Texts{"info: holding sleep \u2014 waiting for work to resume",
                                      "info: released sleep hold"}));
}

TEST_F(EngineTest, RoundsUpTheSecondsThatAreLeft) {
  engine->tick();
  tickAfter(2.0s);
  EXPECT_EQ(status(), EngineStatus::winding(118));
  tickAfter(0.5s);
  EXPECT_EQ(status(), EngineStatus::winding(118));
  tickAfter(0.6s);
  EXPECT_EQ(status(), EngineStatus::winding(117));
}

TEST_F(EngineTest, StaysIdleWithoutACallAfterTheGracePeriod) {
  engine->tick();
  tickAfter(130s);
  const std::size_t calls = fakes.power.calls.size();
  tickAfter(2s);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::idle());
  EXPECT_EQ(fakes.power.calls.size(), calls);
}

TEST_F(EngineTest, RemembersTheQuietSpellWhileIdle) {
  engine->tick();
  tickAfter(130s);
  EXPECT_EQ(status(), EngineStatus::idle());
  fakes.defaults.stored["graceSeconds"] = Integer{200};
  tickAfter(10s);
  EXPECT_EQ(status(), EngineStatus::winding(60));
}

// The power policy.

TEST_F(EngineTest, At19PercentOnBatteryABusyEngineIsBlockedAndHoldsNothing) {
  work(10, "A", 80);
  tickUntilBusy();
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
  setBattery(19);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::blocked("battery below 20%"));
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(engine->busyApps().get().size(), 1U) << "it is still seen working";
}

TEST_F(EngineTest, HoldsAgainAsSoonAsTheBlockLifts) {
  work(10, "A", 80);
  setBattery(19);
  tickUntilBusy();
  fakes.powerSources.setBatteryOnAC(19);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
}

TEST_F(EngineTest, IsBlockedInLowPowerMode) {
  fakes.powerSources.lowPowerMode = true;
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::blocked("Low Power Mode is on"));
  fakes.defaults.stored["respectLowPower"] = false;
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(120)) << "a changed setting counts at the next tick";
}

TEST_F(EngineTest, ABlockedPassEndsTheGracePeriod) {
  engine->tick();
  tickAfter(100s);
  EXPECT_EQ(status(), EngineStatus::winding(20));
  setBattery(19);
  tickAfter(2s);
  EXPECT_TRUE(fakes.power.live.empty());
  setBattery(80);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
}

TEST_F(EngineTest, ABlockedEngineMakesNoCallTickAfterTick) {
  setBattery(19);
  engine->tick();
  engine->tick();
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
}

// Working passes.

TEST_F(EngineTest, HoldsForBusyAppsThenAssertingAppsInTheirOrder) {
  work(10, "A", 80);
  work(11, "B", 40);
  assertOwn(500, "C");
  tickUntilBusy();
  EXPECT_EQ(status(), EngineStatus::holding({"A", "B", "C"}));
  EXPECT_EQ(fakes.power.liveNames(), Texts{"A and 2 more are working"});
}

TEST_F(EngineTest, HoldsForAnAssertingAppAlone) {
  assertOwn(500, "C");
  tickUntilBusy();
  EXPECT_EQ(status(), EngineStatus::holding({"C"}));
  EXPECT_EQ(fakes.power.liveNames(), Texts{"C is working"});
}

TEST_F(EngineTest, UsesThePluralForOneOther) {
  work(10, "A", 80);
  work(11, "B", 40);
  tickUntilBusy();
  EXPECT_EQ(fakes.power.liveNames(), Texts{"A and 1 more are working"});
}

TEST_F(EngineTest, HoldsUnderTheDisplayNameOfTheCatalogue) {
  work(10, "make", 80);
  tickUntilBusy();
  EXPECT_EQ(status(), EngineStatus::holding({"make / cmake"}));
  EXPECT_EQ(fakes.power.liveNames(), Texts{"make / cmake is working"});
}

TEST_F(EngineTest, AssertingAppsDoNotCountUnlessTheyAreTrusted) {
  fakes.defaults.stored["honorAppAssertions"] = false;
  assertOwn(500, "C");
  tickUntilBusy();
  EXPECT_EQ(status(), EngineStatus::winding(116));
}

TEST_F(EngineTest, ReadsTheThresholdsOnEveryTick) {
  work(10, "A", 80);
  tickUntilBusy();
  fakes.defaults.stored["ignoredApps"] = Texts{"A"};
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
  fakes.defaults.stored.erase("ignoredApps");
  fakes.defaults.stored["cpuThresholdPercent"] = 90.0;
  tickAfter(2s);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(116));
}

TEST_F(EngineTest, BusyQuietBusyIsOneAssertionRenamedTwiceAndNeverReleased) {
  work(10, "A", 80);
  tickUntilBusy();
  fakes.power.calls.clear();
  const auto workers_ = workers;
  stopWork();
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
  workers = workers_;
  tickAfter(2s);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
  EXPECT_EQ(fakes.power.calls,
            (Texts{"rename 1 'waiting for work to resume'", "rename 1 'A is working'"}));
}

TEST_F(EngineTest, WorkEndsTheQuietSpell) {
  work(10, "A", 80);
  tickUntilBusy();
  stopWork();
  tickAfter(2s);
  tickAfter(100s);
  EXPECT_EQ(status(), EngineStatus::winding(20));
  workers.push_back({10, 80});
  tickAfter(2s);
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
  stopWork();
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
}

TEST_F(EngineTest, TheScreenFollowsItsSettingWhileWindingAndWhileHolding) {
  fakes.defaults.stored["keepScreenOn"] = true;
  engine->tick();
  EXPECT_EQ(fakes.power.liveNames(),
            (Texts{"waiting for work to resume", "waiting for work to resume"}));
  fakes.defaults.stored["keepScreenOn"] = false;
  engine->tick();
  EXPECT_EQ(fakes.power.live.size(), 1U);

  work(10, "A", 80);
  tickUntilBusy();
  fakes.defaults.stored["keepScreenOn"] = true;
  tickAfter(2s);
  EXPECT_EQ(fakes.power.liveNames(), (Texts{"A is working", "A is working"}));
}

TEST_F(EngineTest, AFailedHoldLeavesTheStatusAsComputedAndIsTriedAgain) {
  fakes.power.systemFailure = -16;
  engine->tick();
  EXPECT_EQ(status(), EngineStatus::winding(120));
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(fakes.log.lines(), Texts{"error: failed to create sleep assertion: -16"});
  fakes.power.systemFailure = 0;
  tickAfter(2s);
  EXPECT_EQ(fakes.power.live.size(), 1U);
}

// Pausing.

TEST_F(EngineTest, APausedEnginesTickChangesNothingAndCallsNothing) {
  work(10, "A", 80);
  assertOwn(500, "C");
  tickUntilBusy();
  engine->setPaused(true);
  setBattery(19);
  fakes.assertions.holders.clear();
  fakes.calls->clear();
  int told = 0;
  const Subscription subscription = engine->powerState().observe([&](const auto&) { ++told; });
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::paused());
  EXPECT_EQ(engine->powerState().get(), (PowerState{true, 100, false, false}));
  EXPECT_EQ(engine->busyApps().get().size(), 1U);
  EXPECT_EQ(engine->assertingApps().get(), Texts{"C"});
  EXPECT_EQ(told, 0);
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(EngineTest, PausingReleasesTheHold) {
  engine->tick();
  engine->setPaused(true);
  EXPECT_TRUE(engine->isPaused());
  EXPECT_EQ(status(), EngineStatus::paused());
  EXPECT_TRUE(fakes.power.live.empty());
}

TEST_F(EngineTest, ResumingTicksOnceAtOnceAndWindsWithTheFullGrace) {
  engine->tick();
  tickAfter(100s);
  engine->setPaused(true);
  fakes.clock.advance(50s);
  fakes.calls->clear();
  engine->setPaused(false);
  EXPECT_FALSE(engine->isPaused());
  EXPECT_EQ(fakes.calls->count("list processes"), 1U);
  EXPECT_EQ(status(), EngineStatus::winding(120));
}

TEST_F(EngineTest, ResumingIsIdleForAMomentBeforeItsTick) {
  engine->setPaused(true);
  std::vector<EngineStatus> told;
  const Subscription subscription =
      engine->status().observe([&](const EngineStatus& next) { told.push_back(next); });
  engine->setPaused(false);
  EXPECT_EQ(told, (std::vector<EngineStatus>{EngineStatus::idle(), EngineStatus::winding(120)}));
}

TEST_F(EngineTest, ResumingForgetsWhatWorkedBefore) {
  work(10, "A", 80);
  tickUntilBusy();
  engine->setPaused(true);
  engine->setPaused(false);
  EXPECT_TRUE(engine->busyApps().get().empty());
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(118)) << "a new run has begun";
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
}

TEST_F(EngineTest, PausingAndResumingActOnEveryAssignment) {
  std::vector<EngineStatus> told;
  const Subscription subscription =
      engine->status().observe([&](const EngineStatus& next) { told.push_back(next); });
  engine->setPaused(true);
  engine->setPaused(true);
  EXPECT_EQ(told, (std::vector<EngineStatus>{EngineStatus::paused(), EngineStatus::paused()}));
  engine->setPaused(false);
  told.clear();
  fakes.clock.advance(3s);
  engine->setPaused(false);
  EXPECT_EQ(told, (std::vector<EngineStatus>{EngineStatus::idle(), EngineStatus::winding(117)}))
      << "resuming leaves the quiet spell alone";
}

// Sleep and wake.

TEST_F(EngineTest, ReleasesItsHoldBeforeTheSystemSleepsAndKeepsItsStatus) {
  engine->start();
  fakes.sleepNotifications.tellWillSleep();
  EXPECT_EQ(fakes.power.live.size(), 1U) << "the release is posted to the main loop";
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(status(), EngineStatus::winding(120));
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(118)) << "sleeping alone ends no quiet spell";
  EXPECT_EQ(fakes.power.live.size(), 1U);
}

TEST_F(EngineTest, AWakeWhileWindingRestartsTheGracePeriodFromTheNextTick) {
  engine->start();
  tickAfter(100s);
  EXPECT_EQ(status(), EngineStatus::winding(20));
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(status(), EngineStatus::winding(20)) << "waking does not tick";
  tickAfter(5s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(118));
}

TEST_F(EngineTest, AWakeForgetsWhatWorkedBefore) {
  work(10, "A", 80);
  engine->start();
  tickUntilBusy();
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(status(), EngineStatus::holding({"A"}));
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(120));
}

TEST_F(EngineTest, AWakeActsOnTheMainLoopOnly) {
  engine->start();
  tickAfter(100s);
  fakes.sleepNotifications.tellDidWake();
  tickAfter(2s);
  EXPECT_EQ(status(), EngineStatus::winding(18)) << "what it posted has not run";
}

TEST_F(EngineTest, SleepAndWakeDoNothingOnceTheEngineIsGone) {
  engine->start();
  fakes.sleepNotifications.tellWillSleep();
  engine.reset();
  fakes.calls->clear();
  fakes.sleepNotifications.tellDidWake();
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(fakes.calls->all().empty());
}

// The engine's end.

TEST_F(EngineTest, DroppingTheEngineDropsItsHold) {
  engine->tick();
  engine.reset();
  EXPECT_TRUE(fakes.power.live.empty());
}

TEST_F(EngineTest, GivesItsHoldBackUntilTheNextTick) {
  engine->tick();
  engine->releaseHold();
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(status(), EngineStatus::winding(120));
  engine->tick();
  EXPECT_EQ(fakes.power.live.size(), 1U);
}

}  // namespace
}  // namespace staylit
