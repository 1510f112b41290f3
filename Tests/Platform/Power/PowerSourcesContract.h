#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

#include "Tidewell/Ports/PowerSources.h"

namespace platform {

/// What every system's power sources promise.
///
/// A `Machine` has them as its `sources()`, tells by `missing()` what it lacks to be tested (null
/// when nothing), and feeds itself as it is told by `feed(state)`: from a battery with that state,
/// or without one. `settles(condition)` waits for what may come late.
template <typename Machine>
class PowerSourcesContract : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* missing = machine_.missing()) GTEST_SKIP() << missing;
  }

  using Source = std::optional<tidewell::PowerSource>;

  /// Whether the machine tells of exactly this source after such a change.
  bool tells(const Source& expected) {
    return machine_.settles([&] { return machine_.sources().source() == expected; });
  }

  Machine machine_;
};

TYPED_TEST_SUITE_P(PowerSourcesContract);

TYPED_TEST_P(PowerSourcesContract, TellOfNoSourceWithoutABattery) {
  this->machine_.feed(std::nullopt);
  EXPECT_TRUE(this->tells(std::nullopt));
}

TYPED_TEST_P(PowerSourcesContract, TellOfABatteryThatRunsDown) {
  for (const std::int64_t percent : {100, 50, 1, 0}) {
    this->machine_.feed(tidewell::PowerSource{false, percent});
    EXPECT_TRUE(this->tells(tidewell::PowerSource{false, percent})) << percent;
  }
}

TYPED_TEST_P(PowerSourcesContract, TellOfABatteryOnTheWallAdapter) {
  this->machine_.feed(tidewell::PowerSource{true, 80});
  EXPECT_TRUE(this->tells(tidewell::PowerSource{true, 80}));
}

TYPED_TEST_P(PowerSourcesContract, FollowTheAdapter) {
  this->machine_.feed(tidewell::PowerSource{true, 50});
  EXPECT_TRUE(this->tells(tidewell::PowerSource{true, 50}));
  this->machine_.feed(tidewell::PowerSource{false, 50});
  EXPECT_TRUE(this->tells(tidewell::PowerSource{false, 50}));
}

TYPED_TEST_P(PowerSourcesContract, FollowABatteryThatIsTakenOut) {
  this->machine_.feed(tidewell::PowerSource{true, 50});
  EXPECT_TRUE(this->tells(tidewell::PowerSource{true, 50}));
  this->machine_.feed(std::nullopt);
  EXPECT_TRUE(this->tells(std::nullopt));
}

REGISTER_TYPED_TEST_SUITE_P(PowerSourcesContract, TellOfNoSourceWithoutABattery,
                            TellOfABatteryThatRunsDown, TellOfABatteryOnTheWallAdapter,
                            FollowTheAdapter, FollowABatteryThatIsTakenOut);

}  // namespace platform
