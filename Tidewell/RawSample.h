#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tidewell {

/// One process at one instant. Both counters are cumulative since the process started, never
/// rates: a rate is the difference between two ticks.
struct RawSample {
  std::int32_t pid;
  std::string executable;
  /// The application that owns the process; absent for one that belongs to no application.
  std::optional<std::string> bundleID;
  /// The application's localized name, else the executable name.
  std::string displayName;
  std::uint64_t cpuNanos;   ///< User and system time, in nanoseconds.
  std::uint64_t diskBytes;  ///< Bytes read and written.
};

}  // namespace tidewell
