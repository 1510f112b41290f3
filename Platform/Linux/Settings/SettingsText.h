#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// The content of a settings file: its top-level keys. A value of a type that no setting has (a
/// date, a table, a list with members other than texts) becomes `std::monostate`.
struct SettingsValues {
  tidewell::PropertyDictionary values;
  /// What cannot be read, with its line; empty when everything can. `values` has the rest.
  std::string damage;
};

/// Reads TOML. From a damaged text it reads every statement that is sound by itself. Of a key that
/// stands there twice, it reads the first. It reports failures only in `damage`.
[[nodiscard]] SettingsValues parseSettings(std::string_view text);

/// `text` with `changes`. Everything else stays as it is: other keys, tables, comments, blank
/// lines, line ends, and what cannot be read. A damaged line of a changed key becomes a comment.
/// Where the odd form of a present value does not allow this, the values survive but the comments
/// do not. Absent when a change has no type, or when no such text keeps what is damaged.
[[nodiscard]] std::optional<std::string> withSettings(std::string_view text,
                                                      const tidewell::PropertyDictionary& changes);

}  // namespace platform
