#pragma once

#include <optional>
#include <string>

namespace tidewell {

/// The program's own entry among what the system starts when the user logs in. Main thread only.
class LoginItem {
 public:
  /// Why something failed, for people to read; absent on success.
  using Failure = std::optional<std::string>;

  virtual ~LoginItem() = default;
  /// For both, an entry that is already there, or already gone, is a success.
  virtual Failure registerItem() = 0;
  virtual Failure unregisterItem() = 0;
};

}  // namespace tidewell
