#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

#include "Tidewell/Ports/PowerSources.h"

namespace platform {

/// The contract of power sources, which every system's power sources keep.
///
/// A `Machine` has power sources in `sources()`. `missing()` tells what the machine lacks for the
/// tests; null for nothing. After `feed(state)` the machine runs on a battery with that state, or
/// without a battery. `settles(condition)` waits until the condition holds.
template <typename Machine>
class PowerSourcesContract : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* missing = machine_.missing()) GTEST_SKIP() << missing;
  }

  using Source = std::optional<tidewell::PowerSource>;

  /// Whether the machine tells exactly this source after it was fed so.
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
