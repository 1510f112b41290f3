#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// What a settings file says: its top-level keys. A value of a type that no setting has (a date, a
/// table, a list with other members than texts) stands there as `std::monostate`.
struct SettingsValues {
  tidewell::PropertyDictionary values;
  std::string error;  ///< Why the text is no settings file at all; empty when it is one.
};

/// Reads TOML. Never fails otherwise than by `error`.
[[nodiscard]] SettingsValues parseSettings(std::string_view text);

/// `text` with `key` set to `value` and all else as it stands: other keys, tables, comments, blank
/// lines and line ends. Where an odd form of the key's present value does not allow that, the
/// values survive but the comments do not. Absent when `text` is damaged or `value` has no type.
[[nodiscard]] std::optional<std::string> withSetting(std::string_view text, std::string_view key,
                                                     const tidewell::PropertyValue& value);

}  // namespace platform
