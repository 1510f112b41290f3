#pragma once

#include <cstdint>
#include <optional>

#include "Tidewell/SharedText.h"

namespace tidewell {

/// One process at one instant. Both counters are cumulative since the process started. A rate is
/// made of the difference between two ticks.
struct RawSample {
  std::int32_t pid = 0;
  SharedText executable;
  /// The identifier of the application that owns the process; absent if none does.
  std::optional<SharedText> bundleID;
  /// The application's localized name, or else the name of the executable.
  SharedText displayName;
  std::uint64_t cpuNanos = 0;   ///< User and system time, in nanoseconds.
  std::uint64_t diskBytes = 0;  ///< Bytes read and written.
};

}  // namespace tidewell
