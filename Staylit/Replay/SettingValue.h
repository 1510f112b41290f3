#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace staylit {

/// A setting that somebody gives on a command line.
struct SettingValue {
  std::string key;
  tidewell::PropertyValue value;
};

/// Reads "key=value", with a value as the settings file has it: `cpuThresholdPercent=25`,
/// `keepScreenOn=true`, `ignoredApps=["firefox"]`. Absent when there is no such setting, or the
/// value is of another kind or out of its range; then `error` says so, for people to read.
[[nodiscard]] std::optional<SettingValue> settingValue(std::string_view text, std::string& error);

}  // namespace staylit
