#include "Staylit/History/PageTexts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "Staylit/History/LocalTimes.h"

namespace staylit {
namespace {

constexpr std::array<const char*, 7> kWeekdays = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                  "Friday", "Saturday", "Sunday"};
constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};

constexpr const char* kNoBreak = "\u00a0";

/// 00:00 at the end of a day is 24:00, which nobody takes for its beginning.
std::string endClock(const HistoryTimeline::Span& span) {
  const LocalTime end = LocalTime::of(span.to);
  const bool isMidnight = end.hour == 0 && end.minute == 0 && end.second == 0;
  return isMidnight && span.to > span.from ? "24:00" : hourAndMinute(span.to);
}

}  // namespace

LocalTime LocalTime::of(tidewell::WallTime time) {
  using std::chrono::system_clock;
  const std::time_t second =
      system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
  const std::tm* local = std::localtime(&second);
  if (!local) return {};
  constexpr int kFirstYear = 1900;
  constexpr int kDays = 7;
  return {local->tm_year + kFirstYear,
          local->tm_mon + 1,
          local->tm_mday,
          (local->tm_wday + kDays - 1) % kDays,
          local->tm_hour,
          local->tm_min,
          local->tm_sec};
}

std::string LocalTime::weekdayName() const {
  return kWeekdays.at(static_cast<std::size_t>(weekday));
}

std::string LocalTime::monthName() const {
  return month == 0 ? "" : kMonths.at(static_cast<std::size_t>(month - 1));
}

std::string LocalTime::date() const {
  return std::to_string(day) + kNoBreak + monthName();
}

CalendarWeek CalendarWeek::of(const LocalTime& day) {
  using namespace std::chrono;
  constexpr int kThursday = 3;
  const sys_days date(std::chrono::year(day.year) / day.month / day.day);
  const sys_days thursday = date + days(kThursday - day.weekday);
  const year_month_day named(thursday);
  const auto dayOfYear = (thursday - sys_days(named.year() / January / 1)).count();
  return {static_cast<int>(named.year()), static_cast<int>(dayOfYear / 7) + 1};
}

std::string lengthText(std::chrono::nanoseconds length) {
  using namespace std::chrono;
  const auto unit = [](std::int64_t count, const char* name) {
    return std::to_string(count) + kNoBreak + name;
  };
  if (length < minutes(1)) return unit(std::max(floor<seconds>(length), 0s).count(), "s");
  const auto whole = floor<minutes>(length);
  const auto hour = floor<hours>(whole);
  const auto rest = whole - hour;
  if (hour.count() == 0) return unit(rest.count(), "min");
  if (rest.count() == 0) return unit(hour.count(), "h");
  return unit(hour.count(), "h") + kNoBreak + unit(rest.count(), "min");
}

std::string spanText(const HistoryTimeline::Span& span) {
  using Ending = HistoryTimeline::Ending;
  const std::string text = hourAndMinute(span.from) + " to " + endClock(span);
  if (span.ending == Ending::open) return text + " and on";
  return span.ending == Ending::lost ? text + " at least" : text;
}

std::string percentText(double fraction) {
  constexpr int kThousandths = 100'000;
  const auto thousandths =
      static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * kThousandths));
  std::string decimals = std::to_string(1000 + thousandths % 1000).substr(1);
  while (!decimals.empty() && decimals.back() == '0')
    decimals.pop_back();
  return std::to_string(thousandths / 1000) + (decimals.empty() ? "" : "." + decimals) + "%";
}

}  // namespace staylit
