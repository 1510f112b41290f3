#include "Staylit/TimeTexts.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <utility>

namespace staylit {
namespace {

std::time_t wholeSecond(tidewell::WallTime time) {
  using std::chrono::system_clock;
  return system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
}

std::tm localTime(tidewell::WallTime time) {
  const std::time_t second = wholeSecond(time);
  // `localtime` is safe here, because only the main thread asks for local time.
  const std::tm* local = std::localtime(&second);
  return local ? *local : std::tm();
}

std::string dateOf(const std::tm& local) {
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d", &local);
  return text.data();
}

/// A longer time is as good as this one, and fits every integer.
constexpr double kLongest = 1e15;

}  // namespace

std::string timeOfDay(tidewell::WallTime time) {
  const std::tm local = localTime(time);
  std::array<char, 16> text{};
  std::strftime(text.data(), text.size(), "%H:%M:%S", &local);
  return text.data();
}

std::string timeOfDay(tidewell::WallTime time, tidewell::WallTime now) {
  const std::string date = dateOf(localTime(time));
  return (date == dateOf(localTime(now)) ? "" : date + " ") + timeOfDay(time);
}

std::string inUniversalTime(tidewell::WallTime time) {
  const std::time_t second = wholeSecond(time);
  std::array<char, 32> text{};
  const std::tm* universal = std::gmtime(&second);
  if (universal) std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", universal);
  return text.data();
}

std::string lengthOfTime(tidewell::Seconds length) {
  constexpr std::array<std::pair<std::int64_t, const char*>, 4> kUnits = {
      {{86'400, " d"}, {3'600, " h"}, {60, " min"}, {1, " s"}}};
  const double seconds = length.count() > 0 ? length.count() : 0;
  auto left = static_cast<std::int64_t>(seconds < kLongest ? seconds : kLongest);
  for (auto unit = kUnits.begin(); unit != kUnits.end() - 1; ++unit) {
    if (left < unit->first) continue;
    const auto next = unit + 1;
    return std::to_string(left / unit->first) + unit->second + " " +
           std::to_string(left % unit->first / next->first) + next->second;
  }
  return std::to_string(left) + kUnits.back().second;
}

}  // namespace staylit
