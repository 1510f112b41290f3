#include "Tidewell/CheckedArithmetic.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace tidewell {
namespace {

constexpr std::uint64_t kLargestUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr std::int64_t kSmallestSigned = std::numeric_limits<std::int64_t>::min();

TEST(CheckedArithmetic, AddsUpToTheLargestNumber) {
  EXPECT_EQ(checkedAdd<std::uint64_t>(18446744073709551614U, 1), 18446744073709551615U);
  EXPECT_EQ(checkedAdd<std::int64_t>(-5, 3), -2);
}

TEST(CheckedArithmetic, MultipliesUpToTheLargestNumber) {
  EXPECT_EQ(checkedMultiply<std::uint64_t>(4294967295U, 4294967297U), 18446744073709551615U);
  EXPECT_EQ(checkedMultiply<std::uint64_t>(0, kLargestUnsigned), 0U);
}

TEST(CheckedArithmeticDeathTest, EndsTheProcessWhenAnAdditionOverflows) {
  EXPECT_DEATH(static_cast<void>(checkedAdd<std::uint64_t>(kLargestUnsigned, 1)),
               "fatal error: arithmetic overflow in an addition");
  EXPECT_DEATH(static_cast<void>(checkedAdd<std::int64_t>(kSmallestSigned, -1)),
               "fatal error: arithmetic overflow in an addition");
}

TEST(CheckedArithmeticDeathTest, EndsTheProcessWhenAMultiplicationOverflows) {
  EXPECT_DEATH(static_cast<void>(checkedMultiply<std::uint64_t>(4294967296U, 4294967296U)),
               "fatal error: arithmetic overflow in a multiplication");
  EXPECT_DEATH(static_cast<void>(checkedMultiply<std::int64_t>(kSmallestSigned, -1)),
               "fatal error: arithmetic overflow in a multiplication");
}

}  // namespace
}  // namespace tidewell
