#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidewell {

/// One sleep assertion that a process holds, as the system's service describes it.
struct ListedAssertion {
  std::string type;                   ///< For example "PreventSystemSleep"; empty when not told.
  std::optional<std::int64_t> level;  ///< 0: switched off. Absent when no integer is told.
  std::string reason;                 ///< For people to read; empty when not told.
  std::string owner = {};             ///< What the holder calls itself; empty when not told.

  friend bool operator==(const ListedAssertion&, const ListedAssertion&) = default;
};

/// A process, and the assertions that it holds.
struct AssertionHolder {
  std::int64_t process = 0;
  std::vector<ListedAssertion> assertions;

  friend bool operator==(const AssertionHolder&, const AssertionHolder&) = default;
};

/// The sleep assertions that every process holds. Main thread only.
class AssertionTable {
 public:
  virtual ~AssertionTable() = default;

  /// Absent when the service cannot be asked or answers in an unknown shape.
  virtual std::optional<std::vector<AssertionHolder>> assertionsByProcess() = 0;

  /// This process's own identifier.
  virtual std::int32_t ownProcessIdentifier() = 0;
};

}  // namespace tidewell
