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
/// The list of assertions hands the numbers out, and whoever names the holders looks them up. Main
/// thread only.
class NamedHolders {
 public:
  /// The application's number. It stays the same as long as it is kept.
  std::int32_t identifierFor(const std::string& applicationId);

  /// Absent for a number that was never given, or is no longer kept.
  [[nodiscard]] std::optional<std::string> applicationId(std::int32_t identifier) const;

  /// Forgets all other numbers.
  void keepOnly(const std::set<std::int32_t>& identifiers);

 private:
  std::map<std::string, std::int32_t> identifiers_;
  std::map<std::int32_t, std::string> applicationIds_;
  std::int32_t last_ = 0;
};

}  // namespace platform
