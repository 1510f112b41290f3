#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Settings/TomlLibrary.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// What `text` holds; absent when it is damaged anywhere.
[[nodiscard]] std::optional<toml::table> parsed(std::string_view text);

/// The setting in `node`; `std::monostate` for a type that no setting has.
[[nodiscard]] tidewell::PropertyValue valueOf(const toml::node& node);

/// Writes all values, one in each line. The result depends only on the values, not on the form of
/// the text from which they come.
[[nodiscard]] std::string canonical(const toml::table& table);

/// Writes the table in the library's own style. That looks better, but fails with some keys.
[[nodiscard]] std::string formatted(const toml::table& table);

/// Whether the value stands in one place of the text. Tables with headers, and tables that dotted
/// keys make, do not.
[[nodiscard]] bool hasOnePlace(const toml::node& node);

}  // namespace platform
