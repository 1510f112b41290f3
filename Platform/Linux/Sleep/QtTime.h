#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace platform {

/// A time of the day as Qt writes it among settings, as its distance from midnight:
/// `@Variant(\0\0\0\xf\0\0u0)`. Absent for anything else.
std::optional<std::chrono::milliseconds> parseQtTime(std::string_view written);

}  // namespace platform
