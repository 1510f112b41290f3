#pragma once

#include <concepts>

#include "Tidewell/FatalError.h"

namespace tidewell {

/// `left` + `right`; an overflow ends the process with a message.
template <std::integral Integer>
[[nodiscard]] Integer checkedAdd(Integer left, Integer right) {
  Integer sum{};
  if (__builtin_add_overflow(left, right, &sum)) fatalError("arithmetic overflow in an addition");
  return sum;
}

/// `left` × `right`; an overflow ends the process with a message.
template <std::integral Integer>
[[nodiscard]] Integer checkedMultiply(Integer left, Integer right) {
  Integer product{};
  if (__builtin_mul_overflow(left, right, &product)) {
    fatalError("arithmetic overflow in a multiplication");
  }
  return product;
}

}  // namespace tidewell
