#pragma once

#include <chrono>
#include <string>

#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// Dates, times and lengths of time as the page of the history words them, in HTML. Main thread
/// only, because the C library's local time is one for the whole process.

/// A point in time where the computer is.
struct LocalTime {
  int year = 0;
  int month = 0;    ///< 1 to 12.
  int day = 0;      ///< 1 to 31.
  int weekday = 0;  ///< 0 is Monday.
  int hour = 0;
  int minute = 0;
  int second = 0;

  static LocalTime of(tidewell::WallTime time);

  [[nodiscard]] std::string weekdayName() const;  ///< "Sunday"
  [[nodiscard]] std::string monthName() const;    ///< "November"
  [[nodiscard]] std::string date() const;         ///< "22 November"
};

/// A week from Monday to Sunday. By ISO 8601 the week belongs to the year of its Thursday.
struct CalendarWeek {
  int year = 0;
  int number = 0;

  static CalendarWeek of(const LocalTime& day);
  friend bool operator==(const CalendarWeek&, const CalendarWeek&) = default;
};

/// "32 h 10 min", "7 h", "53 min" or "40 s", rounded down, in one line wherever it stands.
[[nodiscard]] std::string lengthText(std::chrono::nanoseconds length);

/// "09:14 to 11:02", and whether the span goes on.
[[nodiscard]] std::string spanText(const HistoryTimeline::Span& span);

/// A part of a whole for an attribute of a drawing: "12.5%".
[[nodiscard]] std::string percentText(double fraction);

}  // namespace staylit
