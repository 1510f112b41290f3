#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Tidewell/Ports/LoginItem.h"

namespace platform {

/// The desktop file in the `autostart` folder of the user's configuration. It makes every desktop
/// start the program when its user logs in. Main thread only.
class AutostartEntry : public tidewell::LoginItem {
 public:
  /// `program` is the program to start; empty when it is not known.
  explicit AutostartEntry(std::filesystem::path program);

  /// Leaves a file that is right already as it is, and replaces any other.
  std::optional<std::string> registerItem() override;
  /// Removes the file. It is no error when there is none.
  std::optional<std::string> unregisterItem() override;

 private:
  std::filesystem::path program_;
};

}  // namespace platform
