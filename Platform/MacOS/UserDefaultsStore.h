#pragma once

#include "Tidewell/Ports/Defaults.h"

namespace platform {

/// The application's standard user defaults.
class UserDefaultsStore final : public tidewell::Defaults {
 public:
  void registerDefaults(const tidewell::PropertyDictionary& defaults) override;

  std::int64_t integer(std::string_view key) override;
  double real(std::string_view key) override;
  bool boolean(std::string_view key) override;
  std::optional<std::vector<std::string>> stringList(std::string_view key) override;

  void setInteger(std::string_view key, std::int64_t value) override;
  void setReal(std::string_view key, double value) override;
  void setBoolean(std::string_view key, bool value) override;
  void setStringList(std::string_view key, const std::vector<std::string>& value) override;
};

}  // namespace platform
