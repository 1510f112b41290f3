#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// One entry of a service's list of inhibitors, in the core's terms.
struct ListedInhibitor {
  /// 0 where the service tells no process.
  std::int64_t processIdentifier = 0;
  /// What the holder calls itself.
  std::string holder;
  /// The reason that it gave.
  std::string why;
  /// "PreventUserIdleSystemSleep" and the like; none for what does not keep the machine awake.
  std::vector<std::string> types;
  /// 255, or 0 for one that only delays.
  std::int64_t level = 255;
  /// What it takes, in the service's own words; empty where the service has none.
  std::string locks = {};
  /// Whose it is; absent where the service does not tell.
  std::optional<std::uint32_t> user = {};
};

/// Whether `inhibitors` has one with the holder and the reason of `wanted`.
[[nodiscard]] inline bool lists(const std::vector<ListedInhibitor>& inhibitors,
                                const ListedInhibitor& wanted) {
  return std::any_of(inhibitors.begin(), inhibitors.end(), [&wanted](const auto& inhibitor) {
    return inhibitor.holder == wanted.holder && inhibitor.why == wanted.why;
  });
}

}  // namespace platform
