#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

// How a store of settings reads a value of one type as another.
//
// What somebody wrote with an editor need not have the type that the program expects. macOS has
// rules for this case in its user-defaults store; a store of our own follows the same rules with
// these functions. They do not depend on the user's language. A value that cannot be converted
// gives 0, 0.0, false or nothing.

/// A real is cut toward zero. A text gives the decimal integer that it begins with ("12 s" gives
/// 12). A number beyond 64 bits gives the nearest one within. Not-a-number gives 0.
[[nodiscard]] std::int64_t integerValue(const PropertyValue& value);

/// A text gives the decimal number that it begins with, with fraction and exponent. A number beyond
/// the range gives the largest finite number of its sign.
[[nodiscard]] double realValue(const PropertyValue& value);

/// A number is true unless it is 0. A text may begin with blanks, then a sign, then zeros; it is
/// true when the next character is another digit, or the first letter of "yes" or "true" in either
/// case.
[[nodiscard]] bool booleanValue(const PropertyValue& value);

/// Absent for a value of any other type.
[[nodiscard]] std::optional<std::vector<std::string>> stringListValue(const PropertyValue& value);

}  // namespace tidewell
