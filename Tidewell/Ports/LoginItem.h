#pragma once

#include <optional>
#include <string>

namespace tidewell {

/// The program's own entry among what the system starts when the user logs in. Main thread only.
class LoginItem {
 public:
  virtual ~LoginItem() = default;
  /// Both return why it failed, for people to read; absent on success. An entry that is already
  /// there, or already gone, is a success.
  virtual std::optional<std::string> registerItem() = 0;
  virtual std::optional<std::string> unregisterItem() = 0;
};

}  // namespace tidewell
