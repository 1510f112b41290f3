#include "Staylit/ViewChanges.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

class ViewChangesTest : public testing::Test {
 protected:
  Subscription observe() {
    return changes->observe([this] { ++told; });
  }
  int toldAfterTheLoopRan() {
    fakes.mainLoop.runPosted();
    return told;
  }

  tidewell::FakePorts fakes;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
  std::unique_ptr<ViewChanges> changes = std::make_unique<ViewChanges>(*engine, fakes.mainLoop);
  int told = 0;
};

TEST_F(ViewChangesTest, TellsNothingBeforeAnythingChanges) {
  const Subscription subscription = observe();
  EXPECT_EQ(toldAfterTheLoopRan(), 0);
}

TEST_F(ViewChangesTest, TellsOfEverythingThatTheEnginePublishes) {
  const Subscription subscription = observe();
  engine->status().set(EngineStatus::paused());
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
  engine->busyApps().set({});
  EXPECT_EQ(toldAfterTheLoopRan(), 2);
  engine->assertingApps().set({});
  EXPECT_EQ(toldAfterTheLoopRan(), 3);
  engine->powerState().set({true, 100, false, false});
  EXPECT_EQ(toldAfterTheLoopRan(), 4);
}

TEST_F(ViewChangesTest, TellsOfChangesOfTheViewItself) {
  const Subscription subscription = observe();
  changes->viewChanged();
  EXPECT_EQ(told, 0) << "not before the loop runs";
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
}

TEST_F(ViewChangesTest, TellsOnceOfATickAndOnceOfTheNext) {
  const Subscription subscription = observe();
  engine->tick();
  changes->viewChanged();
  EXPECT_EQ(fakes.mainLoop.posted(), 1U);
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
  engine->tick();
  EXPECT_EQ(toldAfterTheLoopRan(), 2);
}

TEST_F(ViewChangesTest, TellsWhenTheNewValueCanBeRead) {
  std::optional<EngineStatus> seen;
  const Subscription subscription = changes->observe([&] { seen = engine->status().get(); });
  engine->status().set(EngineStatus::winding(7));
  fakes.mainLoop.runPosted();
  EXPECT_EQ(seen, EngineStatus::winding(7));
}

TEST_F(ViewChangesTest, TellsEachOfSeveralObservers) {
  int others = 0;
  const Subscription one = observe();
  const Subscription other = changes->observe([&] { ++others; });
  engine->tick();
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
  EXPECT_EQ(others, 1);
}

TEST_F(ViewChangesTest, TellsNobodyWhoseSubscriptionIsDropped) {
  { const Subscription subscription = observe(); }
  engine->tick();
  EXPECT_EQ(fakes.mainLoop.posted(), 0U);
  Subscription subscription = observe();
  engine->tick();
  subscription = {};
  EXPECT_EQ(toldAfterTheLoopRan(), 0) << "though it was posted already";
}

TEST_F(ViewChangesTest, AnObserverMayDropItsOwnSubscription) {
  Subscription subscription;
  subscription = changes->observe([&] {
    subscription = {};
    ++told;
  });
  engine->tick();
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
  engine->tick();
  EXPECT_EQ(toldAfterTheLoopRan(), 1);
}

TEST_F(ViewChangesTest, TellsOfAChangeThatHappensWhileAnObserverIsTold) {
  const Subscription subscription = changes->observe([&] {
    if (++told < 3) changes->viewChanged();
  });
  changes->viewChanged();
  EXPECT_EQ(toldAfterTheLoopRan(), 3);
}

TEST_F(ViewChangesTest, TellsNobodyOnceTheViewIsGone) {
  const Subscription subscription = observe();
  changes->viewChanged();
  changes.reset();
  engine->tick();
  EXPECT_EQ(toldAfterTheLoopRan(), 0);
}

TEST_F(ViewChangesTest, ASubscriptionMayOutliveViewAndEngine) {
  const Subscription subscription = observe();
  engine->tick();
  changes.reset();
  engine.reset();
  EXPECT_EQ(toldAfterTheLoopRan(), 0);
}

}  // namespace
}  // namespace staylit
