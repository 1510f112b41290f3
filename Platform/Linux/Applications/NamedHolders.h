#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace platform {

/// Gives numbers to applications that a session service lists by name alone, so that they can stand
/// among process identifiers. The numbers are negative, which no process's is.
///
/// Shared by the list of assertions, which hands the numbers out, and whoever names their holders.
/// Main thread only.
class NamedHolders {
 public:
  /// The application's number; the same one for as long as it is kept.
  std::int32_t identifierFor(const std::string& applicationId);

  /// Absent for a number that was not given, or no longer is.
  [[nodiscard]] std::optional<std::string> applicationId(std::int32_t identifier) const;

  /// Forgets all others.
  void keepOnly(const std::set<std::int32_t>& identifiers);

 private:
  std::map<std::string, std::int32_t> identifiers_;
  std::map<std::int32_t, std::string> applicationIds_;
  std::int32_t last_ = 0;
};

}  // namespace platform
