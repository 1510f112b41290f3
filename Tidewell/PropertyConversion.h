#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

/// How a store of settings reads a value of one type as another.
///
/// What somebody wrote with an editor need not have the type that the program expects. These are
/// the rules of the platform's own user-defaults store, for stores that have to bring theirs.
/// Independent of the user's language. What cannot be converted gives 0, 0.0, false or nothing.

/// A real is cut toward zero; text gives its leading decimal number ("12 s" is 12); what lies
/// beyond 64 bits gives the nearest value that does not; no number at all ("nan") gives 0.
[[nodiscard]] std::int64_t integerValue(const PropertyValue& value);

/// Text gives its leading decimal number, with fraction and exponent; what lies beyond the range
/// gives the largest finite number of its sign.
[[nodiscard]] double realValue(const PropertyValue& value);

/// A number is true unless it is 0. Text is true when, after blanks, a sign and zeros, it goes on
/// with a digit, or with the first letter of "yes" or "true" in either case.
[[nodiscard]] bool booleanValue(const PropertyValue& value);

/// Only a list of texts is one.
[[nodiscard]] std::optional<std::vector<std::string>> stringListValue(const PropertyValue& value);

}  // namespace tidewell
