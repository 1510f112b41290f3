#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// Days and times where the computer is. Main thread only, because the C library's local time is
/// one for the whole process.

/// A day of the calendar. It has 23 or 25 hours where the clocks are changed.
struct LocalDay {
  tidewell::WallTime from{};
  tidewell::WallTime to{};  ///< When the next day begins.

  friend bool operator==(const LocalDay&, const LocalDay&) = default;
};

[[nodiscard]] LocalDay localDayOf(tidewell::WallTime time);

/// The days that have something between `from` and `to`, whole, in their order.
[[nodiscard]] std::vector<LocalDay> localDaysBetween(tidewell::WallTime from,
                                                     tidewell::WallTime to);

/// "09:31".
[[nodiscard]] std::string hourAndMinute(tidewell::WallTime time);
/// "2026-11-22".
[[nodiscard]] std::string localDate(tidewell::WallTime time);
/// "Sunday, 22 November 2026", in English whatever the locale.
[[nodiscard]] std::string longLocalDate(tidewell::WallTime time);

/// What a person meant by "2026-11-21", "2026-11-21 14:30", "14:30", "today", "yesterday", "now",
/// or "7d", "12h" or "30m" ago. A day means its beginning, or its end where `meansEnd`. Absent for
/// any other text.
[[nodiscard]] std::optional<tidewell::WallTime> timeMeant(std::string_view text,
                                                          tidewell::WallTime now, bool meansEnd);

}  // namespace staylit
