#include "Staylit/PauseControl.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

/// The fake clock begins at 09:00:00 UTC.
class PauseControlTest : public testing::Test {
 protected:
  void pass(tidewell::Seconds time) {
    fakes.clock.advance(time);
    fakes.mainLoop.fireTimers();
    fakes.mainLoop.runPosted();
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  PauseControl control{engine, fakes.ports};
};

TEST_F(PauseControlTest, PausesUntilSomebodyResumes) {
  control.pause(std::nullopt);
  pass(240h);
  EXPECT_TRUE(engine.isPaused());
  EXPECT_EQ(control.until(), std::nullopt);
  EXPECT_TRUE(control.resume());
  EXPECT_FALSE(engine.isPaused());
  EXPECT_FALSE(control.resume()) << "it was not paused";
}

TEST_F(PauseControlTest, ResumesByItselfAtTheEndOfTheLength) {
  const tidewell::WallTime before = fakes.clock.wallTime();
  control.pause(2h);
  EXPECT_EQ(control.until(), before + 2h);
  pass(7199s);
  EXPECT_TRUE(engine.isPaused());
  pass(1s);
  EXPECT_FALSE(engine.isPaused());
  EXPECT_EQ(control.until(), std::nullopt);
}

TEST_F(PauseControlTest, ANewLengthTakesThePlaceOfTheOldOne) {
  control.pause(1h);
  pass(30min);
  control.pause(1h);
  pass(45min);
  EXPECT_TRUE(engine.isPaused());
  control.pause(std::nullopt);
  pass(2h);
  EXPECT_TRUE(engine.isPaused());
}

TEST_F(PauseControlTest, APauseOfTheMenuThatComesLaterHasNoEnd) {
  control.pause(1h);
  engine.setPaused(false);
  EXPECT_EQ(control.until(), std::nullopt);
  engine.setPaused(true);
  pass(2h);
  EXPECT_TRUE(engine.isPaused());
}

TEST_F(PauseControlTest, TheEndDoesNotFollowASetClock) {
  control.pause(1h);
  fakes.clock.stepWallTime(24h);
  pass(59min);
  EXPECT_TRUE(engine.isPaused());
  pass(1min);
  EXPECT_FALSE(engine.isPaused());
}

TEST_F(PauseControlTest, TheEndOfThePauseMayComeAfterItsOwnEnd) {
  std::optional<PauseControl> shortLived;
  shortLived.emplace(engine, fakes.ports);
  shortLived->pause(1s);
  fakes.clock.advance(2s);
  fakes.mainLoop.fireTimers();
  shortLived.reset();
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(engine.isPaused());
}

}  // namespace
}  // namespace staylit
