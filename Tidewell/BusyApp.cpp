#include "Tidewell/BusyApp.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace tidewell {
namespace {

/// Adds `value`, rounded to a whole number, and its unit. Leaves out a value below 1.
void addPart(std::string& parts, double value, std::string_view unit) {
  if (!(value >= 1.0)) return;
  // The largest double has 309 digits before its point.
  std::array<char, 320> number{};
  std::snprintf(number.data(), number.size(), "%.0f", value);
  if (!parts.empty()) parts += " · ";
  parts += number.data();
  parts += unit;
}

}  // namespace

std::string BusyApp::reason() const {
  std::string parts;
  addPart(parts, cpuPercent, "% CPU");
  addPart(parts, diskKBps, " KB/s disk");
  addPart(parts, netKBps, " KB/s net");
  return parts.empty() ? "active" : parts;
}

}  // namespace tidewell
