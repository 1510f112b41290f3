#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// The content of a settings file: its top-level keys, and those of the table `history` under names
/// such as "history.enabled". A value of a type that no setting has (a
/// date, a table, a list with members other than texts) becomes `std::monostate`.
struct SettingsValues {
  tidewell::PropertyDictionary values;
  /// What cannot be read, with its line; empty when everything can. `values` has the rest.
  std::string damage;
};

/// Reads TOML. From a damaged text it reads every statement that is sound by itself. When a key has
/// two values, the first counts. Failures are reported only in `damage`.
[[nodiscard]] SettingsValues parseSettings(std::string_view text);

/// Puts `changes` into `text`. Everything else stays as it is: other keys, tables, comments, blank
/// lines, line ends, and what cannot be read. A damaged line of a changed key becomes a comment.
/// When an unusual form of the present value does not allow this, the values are kept but the
/// comments are not. Absent when a change has no type, or when the damaged parts could not be kept.
[[nodiscard]] std::optional<std::string> withSettings(std::string_view text,
                                                      const tidewell::PropertyDictionary& changes);

}  // namespace platform
