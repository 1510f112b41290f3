#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// The contract of power management, which every system's power management keeps.
///
/// A `Machine` has the power management in `power()`. `missing()` tells what the machine lacks for
/// the tests; null for nothing. `held()` lists the names of the assertions that the machine's
/// service has. After `refuse(true)` the machine refuses every further assertion. `pass()` lets so
/// much time pass that a name may change, and `settles(condition)` waits until the condition holds.
template <typename Machine>
class PowerManagementContract : public ::testing::Test {
 protected:
  using Names = std::vector<std::string>;
  using Kind = tidewell::AssertionKind;

  void SetUp() override {
    if (const char* missing = machine_.missing()) GTEST_SKIP() << missing;
  }
  void TearDown() override {
    for (const std::uint32_t id : live_)
      machine_.power().releaseAssertion(id);
  }

  std::uint32_t hold(const std::string& name, Kind kind = Kind::system) {
    const auto creation = machine_.power().createAssertion(kind, name);
    EXPECT_EQ(creation.code, 0);
    EXPECT_NE(creation.id, 0U);
    live_.push_back(creation.id);
    return creation.id;
  }
  void release(std::uint32_t id) {
    std::erase(live_, id);
    machine_.power().releaseAssertion(id);
  }

  /// Whether exactly these assertions are held.
  bool holds(const Names& names) {
    return machine_.settles([&] { return machine_.held() == names; });
  }

  Machine machine_;

 private:
  std::vector<std::uint32_t> live_;
};

TYPED_TEST_SUITE_P(PowerManagementContract);

TYPED_TEST_P(PowerManagementContract, HoldsUnderTheNameThatItIsGiven) {
  EXPECT_TRUE(this->holds({}));
  this->hold("a is working");
  EXPECT_TRUE(this->holds({"a is working"}));
}

TYPED_TEST_P(PowerManagementContract, TakesEachNameAsItIs) {
  this->hold("caf\u00E9 \u2014 \U0001F600 and 2 more are working");
  EXPECT_TRUE(this->holds({"caf\u00E9 \u2014 \U0001F600 and 2 more are working"}));
}

TYPED_TEST_P(PowerManagementContract, ReleasesOnlyTheAssertionThatIsMeant) {
  const std::uint32_t system = this->hold("a");
  const std::uint32_t display = this->hold("b", tidewell::AssertionKind::display);
  EXPECT_NE(system, display);
  EXPECT_TRUE(this->holds({"a", "b"}));
  this->release(system);
  EXPECT_TRUE(this->holds({"b"}));
  this->release(display);
  EXPECT_TRUE(this->holds({}));
}

TYPED_TEST_P(PowerManagementContract, KeepsAnAssertionUnderItsNewName) {
  const std::uint32_t id = this->hold("a");
  this->machine_.pass();
  this->machine_.power().setAssertionName(id, "b");
  EXPECT_TRUE(this->holds({"b"}));
  this->release(id);
  EXPECT_TRUE(this->holds({}));
}

TYPED_TEST_P(PowerManagementContract, GivesACodeWhenItIsRefusedAndWorksAfterwards) {
  this->machine_.refuse(true);
  const auto refused = this->machine_.power().createAssertion(tidewell::AssertionKind::system, "a");
  EXPECT_NE(refused.code, 0);
  EXPECT_TRUE(this->holds({}));
  this->machine_.refuse(false);
  this->hold("b");
  EXPECT_TRUE(this->holds({"b"}));
}

TYPED_TEST_P(PowerManagementContract, IsGrantedWhatItHolds) {
  EXPECT_TRUE(this->machine_.power().isGranted());
  this->hold("a");
  EXPECT_TRUE(this->machine_.power().isGranted());
}

TYPED_TEST_P(PowerManagementContract, TellsOfEachLiveAssertionWhoKeepsIt) {
  EXPECT_TRUE(this->machine_.power().liveAssertions().empty());
  const std::uint32_t id = this->hold("a");
  this->hold("b", tidewell::AssertionKind::display);
  const auto live = this->machine_.power().liveAssertions();
  ASSERT_EQ(live.size(), 2U);
  EXPECT_EQ(live[0].name, "a");
  EXPECT_EQ(live[0].kind, tidewell::AssertionKind::system);
  EXPECT_FALSE(live[0].grants.empty());
  EXPECT_EQ(live[1].name, "b");
  EXPECT_EQ(live[1].kind, tidewell::AssertionKind::display);
  this->release(id);
  EXPECT_EQ(this->machine_.power().liveAssertions().size(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(PowerManagementContract, HoldsUnderTheNameThatItIsGiven,
                            TakesEachNameAsItIs, ReleasesOnlyTheAssertionThatIsMeant,
                            KeepsAnAssertionUnderItsNewName,
                            GivesACodeWhenItIsRefusedAndWorksAfterwards, IsGrantedWhatItHolds,
                            TellsOfEachLiveAssertionWhoKeepsIt);

}  // namespace platform
