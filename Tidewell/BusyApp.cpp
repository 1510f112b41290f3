#include "Tidewell/BusyApp.h"

#include <array>
#include <cstdio>
#include <optional>

namespace tidewell {
namespace {

/// Rounded to a whole number; absent for a value below 1.
std::optional<std::string> rounded(double value) {
  if (!(value >= 1.0)) return std::nullopt;
  // The largest double has 309 digits before its point.
  std::array<char, 320> number{};
  std::snprintf(number.data(), number.size(), "%.0f", value);
  return number.data();
}

void add(std::string& parts, const std::string& part) {
  if (!parts.empty()) parts += " · ";
  parts += part;
}

}  // namespace

std::string BusyApp::reason(const Words& words) const {
  std::string parts;
  if (const auto percent = rounded(cpuPercent)) {
    // TRANSLATORS: use of the processor; more than 100 where several cores work.
    add(parts, words.phrase("{percent}% CPU", {{"percent", *percent}}));
  }
  if (const auto speed = rounded(diskKBps)) {
    add(parts, words.phrase("{speed} KB/s disk", {{"speed", *speed}}));
  }
  if (const auto speed = rounded(netKBps)) {
    add(parts, words.phrase("{speed} KB/s net", {{"speed", *speed}}));
  }
  // TRANSLATORS: what an application does that works without figures worth telling.
  return parts.empty() ? words.phrase("active") : parts;
}

}  // namespace tidewell
