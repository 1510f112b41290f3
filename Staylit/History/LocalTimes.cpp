#include "Staylit/History/LocalTimes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

#include "Tidewell/TextReading.h"

namespace staylit {

using tidewell::WallTime;

namespace {

namespace chrono = std::chrono;

std::tm localFields(WallTime time) {
  const std::time_t second = chrono::system_clock::to_time_t(chrono::floor<chrono::seconds>(time));
  const std::tm* fields = std::localtime(&second);
  return fields ? *fields : std::tm{};
}

WallTime fromSeconds(std::time_t seconds) {
  return WallTime(chrono::seconds(seconds));
}

/// The time of those fields, which may be beyond their ranges as for `mktime`.
WallTime localTime(int year, int month, int day, int hour = 0, int minute = 0) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_isdst = -1;
  return fromSeconds(std::mktime(&fields));
}

/// Where the clocks are changed at midnight, a day begins at one o'clock, and the C library may
/// take a midnight that never was for the evening before.
WallTime beginningOfDay(int year, int month, int day) {
  const std::tm noon = localFields(localTime(year, month, day, 12));
  WallTime begin = localTime(year, month, day);
  if (localFields(begin).tm_mday != noon.tm_mday) begin += chrono::hours(1);
  return begin;
}

WallTime beginningOfDay(const std::tm& fields, int daysLater) {
  return beginningOfDay(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday + daysLater);
}

std::string twoDigits(int number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

/// Takes a number of exactly so many digits off the front.
std::optional<int> takeDigitsOf(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  const auto number = tidewell::wholeNumber<unsigned>(text.substr(0, digits));
  if (!number) return std::nullopt;
  text.remove_prefix(digits);
  return static_cast<int>(*number);
}

bool takeMark(std::string_view& text, std::string_view marks) {
  if (text.empty() || marks.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

struct HourAndMinute {
  int hour;
  int minute;
};

/// "14:30" is all that is left of `text`.
std::optional<HourAndMinute> timeIn(std::string_view text) {
  const auto hour = takeDigitsOf(text, 2);
  if (!hour || !takeMark(text, ":")) return std::nullopt;
  const auto minute = takeDigitsOf(text, 2);
  if (!minute || !text.empty() || *hour > 23 || *minute > 59) return std::nullopt;
  return HourAndMinute{*hour, *minute};
}

/// "2026-11-21" stands at the front of `text`.
std::optional<chrono::year_month_day> takeDate(std::string_view& text) {
  const auto year = takeDigitsOf(text, 4);
  if (!year || !takeMark(text, "-")) return std::nullopt;
  const auto month = takeDigitsOf(text, 2);
  if (!month || !takeMark(text, "-")) return std::nullopt;
  const auto day = takeDigitsOf(text, 2);
  if (!day) return std::nullopt;
  const auto date = chrono::year(*year) / *month / *day;
  const bool isInRange = *year >= 1970 && *year <= 2200;
  return date.ok() && isInRange ? std::optional(date) : std::nullopt;
}

std::optional<WallTime> dateMeant(std::string_view text, bool meansEnd) {
  const auto date = takeDate(text);
  if (!date) return std::nullopt;
  const int year{date->year()};
  const auto month = static_cast<int>(unsigned{date->month()});
  const auto day = static_cast<int>(unsigned{date->day()});
  if (text.empty()) return beginningOfDay(year, month, meansEnd ? day + 1 : day);
  if (!takeMark(text, " T")) return std::nullopt;
  const auto time = timeIn(text);
  if (!time) return std::nullopt;
  return localTime(year, month, day, time->hour, time->minute);
}

/// "12h" before `now`.
std::optional<WallTime> timeAgo(std::string_view text, WallTime now) {
  if (text.empty()) return std::nullopt;
  const char unit = text.back();
  const auto count = tidewell::wholeNumber<unsigned>(text.substr(0, text.size() - 1));
  constexpr unsigned kMost = 100'000;
  if (!count || *count > kMost) return std::nullopt;
  if (unit == 'd') return now - chrono::days(*count);
  if (unit == 'h') return now - chrono::hours(*count);
  if (unit == 'm') return now - chrono::minutes(*count);
  return std::nullopt;
}

}  // namespace

LocalDay localDayOf(WallTime time) {
  const std::tm fields = localFields(time);
  return {beginningOfDay(fields, 0), beginningOfDay(fields, 1)};
}

std::vector<LocalDay> localDaysBetween(WallTime from, WallTime to) {
  std::vector<LocalDay> days{localDayOf(from)};
  while (days.back().to < to) {
    const LocalDay next = localDayOf(days.back().to);
    if (next.to <= days.back().to) break;
    days.push_back(next);
  }
  return days;
}

std::string hourAndMinute(WallTime time) {
  const std::tm fields = localFields(time);
  return twoDigits(fields.tm_hour) + ":" + twoDigits(fields.tm_min);
}

std::string localDate(WallTime time) {
  const std::tm fields = localFields(time);
  return std::to_string(fields.tm_year + 1900) + "-" + twoDigits(fields.tm_mon + 1) + "-" +
         twoDigits(fields.tm_mday);
}

std::string longLocalDate(WallTime time) {
  constexpr std::array<const char*, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                "Thursday", "Friday", "Saturday"};
  constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
  const std::tm fields = localFields(time);
  return std::string(kDays[static_cast<std::size_t>(fields.tm_wday)]) + ", " +
         std::to_string(fields.tm_mday) + " " + kMonths[static_cast<std::size_t>(fields.tm_mon)] +
         " " + std::to_string(fields.tm_year + 1900);
}

std::optional<WallTime> timeMeant(std::string_view text, WallTime now, bool meansEnd) {
  const std::tm today = localFields(now);
  const int laterDays = meansEnd ? 1 : 0;
  if (text == "now") return now;
  if (text == "today") return beginningOfDay(today, laterDays);
  if (text == "yesterday") return beginningOfDay(today, laterDays - 1);
  if (const auto time = timeIn(text)) {
    return localTime(today.tm_year + 1900, today.tm_mon + 1, today.tm_mday, time->hour,
                     time->minute);
  }
  if (const auto date = dateMeant(text, meansEnd)) return date;
  return timeAgo(text, now);
}

}  // namespace staylit
