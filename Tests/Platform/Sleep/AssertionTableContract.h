#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Tidewell/Ports/AssertionTable.h"

namespace platform {

/// The contract of lists of assertions, which every system's list keeps.
///
/// A `Machine` has the list in `table()`. `missing()` tells what the machine lacks for the tests;
/// null for nothing. After `hold(pid, reason)` a process holds off sleep for the reason, and after
/// `holdAsStaylit(pid)` a Staylit does. After `fail()` the list cannot be read.
template <typename Machine>
class AssertionTableContract : public ::testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  /// No process has such a number.
  static constexpr std::int32_t kSomebody = 999'999'901;
  static constexpr std::int32_t kAnother = 999'999'902;

  void SetUp() override {
    if (const char* missing = machine_.missing()) GTEST_SKIP() << missing;
  }

  /// Each assertion as "pid type level name".
  Lines assertions() {
    Lines lines;
    const auto all = machine_.table().assertionsByProcess();
    if (!all) return {"absent"};
    for (const tidewell::AssertionHolder& holder : *all) {
      for (const tidewell::ListedAssertion& assertion : holder.assertions)
        lines.push_back(std::to_string(holder.process) + described(assertion));
    }
    return lines;
  }

  Machine machine_;

 private:
  static std::string described(const tidewell::ListedAssertion& assertion) {
    return " " + assertion.type + " " + std::to_string(assertion.level.value_or(-1)) + " " +
           assertion.reason;
  }
};

TYPED_TEST_SUITE_P(AssertionTableContract);

TYPED_TEST_P(AssertionTableContract, IsEmptyWhereNothingIsHeld) {
  EXPECT_EQ(this->assertions(), std::vector<std::string>{});
}

TYPED_TEST_P(AssertionTableContract, ListsWhatOtherProcessesHold) {
  this->machine_.hold(this->kSomebody, "exporting a film");
  this->machine_.hold(this->kAnother, "playing");
  EXPECT_EQ(this->assertions(),
            (std::vector<std::string>{"999999901 PreventUserIdleSystemSleep 255 exporting a film",
                                      "999999902 PreventUserIdleSystemSleep 255 playing"}));
}

TYPED_TEST_P(AssertionTableContract, GathersTheAssertionsOfOneProcess) {
  this->machine_.hold(this->kSomebody, "a");
  this->machine_.hold(this->kSomebody, "b");
  const auto all = this->machine_.table().assertionsByProcess();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 1U);
  EXPECT_EQ(all->front().process, this->kSomebody);
  EXPECT_EQ(all->front().assertions.size(), 2U);
}

TYPED_TEST_P(AssertionTableContract, CleansTheReason) {
  this->machine_.hold(this->kSomebody, "why\a \u2014 caf\u00E9");
  EXPECT_EQ(this->assertions(),
            std::vector<std::string>{
                "999999901 PreventUserIdleSystemSleep 255 why\uFFFD \u2014 caf\u00E9"});
}

TYPED_TEST_P(AssertionTableContract, LeavesOutAnotherStaylit) {
  this->machine_.holdAsStaylit(this->kSomebody);
  this->machine_.hold(this->kAnother, "playing");
  EXPECT_EQ(this->assertions(),
            std::vector<std::string>{"999999902 PreventUserIdleSystemSleep 255 playing"});
}

TYPED_TEST_P(AssertionTableContract, ListsItsOwnHoldUnderItsProcess) {
  EXPECT_EQ(this->machine_.table().ownProcessIdentifier(), getpid());
  this->machine_.holdAsStaylit(getpid());
  EXPECT_EQ(this->assertions().size(), 1U);
}

TYPED_TEST_P(AssertionTableContract, IsAbsentWhereNobodyCanBeAsked) {
  this->machine_.hold(this->kSomebody, "playing");
  this->machine_.fail();
  EXPECT_EQ(this->assertions(), std::vector<std::string>{"absent"});
}

REGISTER_TYPED_TEST_SUITE_P(AssertionTableContract, IsEmptyWhereNothingIsHeld,
                            ListsWhatOtherProcessesHold, GathersTheAssertionsOfOneProcess,
                            CleansTheReason, LeavesOutAnotherStaylit,
                            ListsItsOwnHoldUnderItsProcess, IsAbsentWhereNobodyCanBeAsked);

}  // namespace platform
