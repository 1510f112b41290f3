#pragma once

#include <string>

#include "Tidewell/AppCategory.h"
#include "Tidewell/Words.h"

namespace tidewell {

/// One application found working. Made by the activity monitor only.
struct BusyApp {
  /// The application key: its bundle identifier, else its executable name.
  std::string id;
  std::string display;  ///< The name to show.
  AppCategory category = AppCategory::other;
  /// Percent of one core, summed over the application's processes; may exceed 100.
  double cpuPercent = 0;
  double diskKBps = 0;  ///< 1 KB is 1024 bytes.
  double netKBps = 0;
  /// Seconds since the application's unbroken run of over-threshold ticks began.
  double busyFor = 0;

  /// Why the application counts as working, in one line: "112% CPU · 2048 KB/s net".
  [[nodiscard]] std::string reason(const Words& words = Words::source()) const;

  /// Whether both are the same application, whatever it does at the moment.
  friend bool operator==(const BusyApp& left, const BusyApp& right) { return left.id == right.id; }
};

}  // namespace tidewell
