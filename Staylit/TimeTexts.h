#pragma once

#include <string>

#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// Points and lengths of time for people and for programs to read. Main thread only, because the
/// C library's local time is one for the whole process.

/// The time of day where the computer is: "09:31:04".
[[nodiscard]] std::string timeOfDay(tidewell::WallTime time);

/// The same with the date before it where that is not the date of `now`: "2026-11-24 09:31:04".
[[nodiscard]] std::string timeOfDay(tidewell::WallTime time, tidewell::WallTime now);

/// The whole second in universal time, as ISO 8601 writes it: "2026-11-22T09:31:04Z".
[[nodiscard]] std::string inUniversalTime(tidewell::WallTime time);

/// Its two largest units, rounded down: "14 s", "3 min 5 s", "2 h 10 min", "3 d 4 h". What is
/// negative is "0 s".
[[nodiscard]] std::string lengthOfTime(tidewell::Seconds length);

}  // namespace staylit
