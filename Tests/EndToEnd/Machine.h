#pragma once

#include <gtest/gtest.h>

#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::testing {

/// A test on a machine of its own. It is skipped, with the reason, where there can be none.
class Machine : public ::testing::Test, protected OwnMachine {
 protected:
  void SetUp() override {
    if (const auto obstacle = OwnMachine::obstacle()) GTEST_SKIP() << *obstacle;
    ASSERT_TRUE(begin()) << "logind does not answer";
  }
};

}  // namespace staylit::testing
