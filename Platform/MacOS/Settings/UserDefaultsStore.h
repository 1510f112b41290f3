#pragma once

#import <Foundation/Foundation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/Defaults.h"

namespace platform {

/// The user defaults: the application's standard ones unless others are given. Keeps a reference to
/// them.
class UserDefaultsStore final : public tidewell::Defaults {
 public:
  explicit UserDefaultsStore(NSUserDefaults* store = NSUserDefaults.standardUserDefaults)
      : store_(store) {}

  void registerDefaults(const tidewell::PropertyDictionary& defaults) override;

  std::int64_t integer(std::string_view key) override;
  double real(std::string_view key) override;
  bool boolean(std::string_view key) override;
  std::optional<std::vector<std::string>> stringList(std::string_view key) override;

  void setInteger(std::string_view key, std::int64_t value) override;
  void setReal(std::string_view key, double value) override;
  void setBoolean(std::string_view key, bool value) override;
  void setStringList(std::string_view key, const std::vector<std::string>& value) override;

  /// Hands the new values to the system's own process, which writes them. Logs when the system
  /// says that it failed.
  void finishWriting() override;

 private:
  NSUserDefaults* const store_;
};

}  // namespace platform
