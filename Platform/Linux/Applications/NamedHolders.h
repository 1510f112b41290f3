#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace platform {

/// Gives numbers to applications that a session service lists only by name, so that they can stand
/// among process identifiers. The numbers are negative, and so differ from those of all processes.
///
/// `InhibitorList` hands the numbers out, and `LinuxRunningApplications` looks up the names. Main
/// thread only.
class NamedHolders {
 public:
  /// The number of the application. It stays the same until it is forgotten.
  std::int32_t identifierFor(const std::string& applicationId);

  /// Absent for a number that was never given, or was forgotten.
  [[nodiscard]] std::optional<std::string> applicationId(std::int32_t identifier) const;

  /// Forgets all numbers except `identifiers`.
  void keepOnly(const std::set<std::int32_t>& identifiers);

 private:
  std::map<std::string, std::int32_t> identifiers_;
  std::map<std::int32_t, std::string> applicationIds_;
  std::int32_t last_ = 0;
};

}  // namespace platform
