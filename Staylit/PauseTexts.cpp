#include "Staylit/PauseTexts.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <utility>

#include "Staylit/TimeTexts.h"
#include "Tidewell/TextReading.h"

namespace staylit {
namespace {

constexpr std::int64_t kDay = 86'400;
constexpr std::int64_t kLongestPause = 366 * kDay;

constexpr std::chrono::seconds kRounding{30};
/// The end of a pause that is not longer is told to the second.
constexpr std::chrono::minutes kShortPause{2};

/// "min" goes before "m", which it begins with.
constexpr std::array<std::pair<std::string_view, std::int64_t>, 5> kUnits = {
    {{"d", kDay}, {"h", 3600}, {"min", 60}, {"m", 60}, {"s", 1}}};

/// The seconds of the unit with which `text` begins, which is taken off; 0 where there is none.
std::int64_t takeUnit(std::string_view& text) {
  for (const auto& [name, seconds] : kUnits) {
    if (!text.starts_with(name)) continue;
    text.remove_prefix(name.size());
    return seconds;
  }
  return 0;
}

}  // namespace

std::optional<tidewell::Seconds> pauseLengthIn(std::string_view text) {
  std::int64_t total = 0;
  while (!text.empty()) {
    const auto number = tidewell::takeWholeNumber<std::int32_t>(text);
    const std::int64_t unit = takeUnit(text);
    if (!number || *number < 0 || unit == 0) return std::nullopt;
    total += *number * unit;
    if (total > kLongestPause) return std::nullopt;
  }
  if (total < 1) return std::nullopt;
  return tidewell::Seconds(static_cast<double>(total));
}

std::string describePause(std::optional<tidewell::WallTime> until, tidewell::WallTime now) {
  if (!until) return "Paused";
  // The answer comes a moment after the pause began.
  const tidewell::Seconds length = *until - now + kRounding;
  std::string time = timeOfDay(*until, now);
  constexpr std::string_view kSeconds = ":00";
  if (length > kShortPause) time.resize(time.size() - kSeconds.size());
  if (length < std::chrono::seconds(kDay)) return "Paused until " + time;
  return "Paused for " + lengthOfTime(length) + ", until " + time;
}

}  // namespace staylit
