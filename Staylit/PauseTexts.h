#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// The length that somebody wrote for a pause: whole numbers with units, as in "45m", "2h" or
/// "1h30m"; the units are d, h, m or min, and s. Absent for anything else, and for what is shorter
/// than a second or longer than a year.
[[nodiscard]] std::optional<tidewell::Seconds> pauseLengthIn(std::string_view text);

/// What has been done, for people: "Paused until 14:30". `until` is absent where nothing ends the
/// pause by itself.
[[nodiscard]] std::string describePause(std::optional<tidewell::WallTime> until,
                                        tidewell::WallTime now);

}  // namespace staylit
