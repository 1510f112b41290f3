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
  /// What cannot be read, with its line; empty when all can. `values` has the rest.
  std::string damage;
};

/// Reads TOML. Of a damaged text it reads each statement that is sound by itself; of a key that
/// stands there twice, the first. Never fails otherwise than by `damage`.
[[nodiscard]] SettingsValues parseSettings(std::string_view text);

/// `text` with `changes` made and all else as it stands: other keys, tables, comments, blank lines,
/// line ends, and what cannot be read. A damaged line of a changed key becomes a comment. Where an
/// odd form of a present value does not allow that, the values survive but the comments do not.
/// Absent when a change has no type, or when there is no such text that keeps what is damaged.
[[nodiscard]] std::optional<std::string> withSettings(std::string_view text,
                                                      const tidewell::PropertyDictionary& changes);

}  // namespace platform
