#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// GSettings' own command-line tool.
inline constexpr const char* kSettingsTool = "/usr/bin/gsettings";

/// The settings of desktops that keep them in GSettings, read by its own command-line tool, so that
/// nothing is linked for it. Blocks for two seconds at most for each. Any one thread.
class DesktopSettings {
 public:
  /// `launcher` must outlive this; `tool` is a path.
  DesktopSettings(tidewell::TaskLauncher& launcher, std::string tool)
      : launcher_(launcher), tool_(std::move(tool)) {}

  /// Absent where there is no such tool, schema or key, or its value is of another kind.
  [[nodiscard]] std::optional<std::int64_t> number(const std::string& schema,
                                                   const std::string& key) const;
  [[nodiscard]] std::optional<std::string> text(const std::string& schema,
                                                const std::string& key) const;

 private:
  [[nodiscard]] std::string printed(const std::string& schema, const std::string& key) const;

  tidewell::TaskLauncher& launcher_;
  std::string tool_;
};

/// What the tool prints for a number: "1200", "uint32 5".
std::optional<std::int64_t> parseSettingNumber(std::string_view printed);
/// What it prints for a text or a choice: "'suspend'". Absent for a text that has quotes itself.
std::optional<std::string> parseSettingText(std::string_view printed);

/// A number or a truth value of XFCE's power manager, from the service that keeps XFCE's settings;
/// 0 for one that was never set. Absent when that service cannot be asked. One bounded call.
std::optional<std::int64_t> readXfceSetting(Bus& sessionBus, const std::string& key);
/// Whether such a number of minutes means "never".
bool isNeverForXfce(std::int64_t minutes);

}  // namespace platform
