#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Tidewell/Ports/LoginItem.h"

namespace platform {

/// The desktop file by which every desktop starts the program when its user logs in, in the
/// `autostart` folder of the user's configuration. Main thread only.
class AutostartEntry : public tidewell::LoginItem {
 public:
  /// `program` is what is to be started; empty when that is not known.
  explicit AutostartEntry(std::filesystem::path program);

  /// Leaves a file alone that is right already, and replaces any other.
  std::optional<std::string> registerItem() override;
  /// What is not there needs no removal.
  std::optional<std::string> unregisterItem() override;

 private:
  std::filesystem::path program_;
};

}  // namespace platform
