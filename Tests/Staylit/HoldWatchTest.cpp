#include "Staylit/HoldWatch.h"

#include <gtest/gtest.h>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

/// An engine that waits for work to resume, so it wants the machine awake.
class HoldWatchTest : public testing::Test {
 protected:
  void look(int times) {
    for (int time = 0; time < times; ++time)
      engine.tick();
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  int told = 0;
  HoldWatch watch{engine, fakes.power, [this] { ++told; }};
};

TEST_F(HoldWatchTest, SaysNothingWhileTheHoldIsGranted) {
  look(20);
  EXPECT_EQ(told, 0);
}

TEST_F(HoldWatchTest, SaysOnceAfterSixTicksThatNoServiceGrantsTheHold) {
  fakes.power.granted = false;
  look(5);
  EXPECT_EQ(told, 0);
  look(1);
  EXPECT_EQ(told, 1);
  look(20);
  EXPECT_EQ(told, 1);
}

TEST_F(HoldWatchTest, AlsoSaysSoWhenTheHoldCannotBeMadeAtAll) {
  fakes.power.systemFailure = -13;
  look(20);
  EXPECT_EQ(told, 1);
}

TEST_F(HoldWatchTest, SaysNothingWhenTheServiceIsBackSoon) {
  look(1);
  fakes.power.granted = false;
  look(5);
  fakes.power.granted = true;
  look(1);
  fakes.power.granted = false;
  look(5);
  EXPECT_EQ(told, 0);
}

TEST_F(HoldWatchTest, SaysItAgainOnlyAfterAHoldWasGranted) {
  fakes.power.granted = false;
  look(20);
  engine.setPaused(true);
  engine.setPaused(false);
  look(20);
  EXPECT_EQ(told, 1);
  fakes.power.granted = true;
  look(1);
  fakes.power.granted = false;
  look(20);
  EXPECT_EQ(told, 2);
}

TEST_F(HoldWatchTest, SaysNothingWhileNoHoldIsWanted) {
  fakes.power.granted = false;
  fakes.powerSources.lowPowerMode = true;
  look(20);
  EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace staylit
