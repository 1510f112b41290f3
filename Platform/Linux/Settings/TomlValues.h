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

/// All values, one in each line, in one form, whatever the form of the text from which they come.
[[nodiscard]] std::string canonical(const toml::table& table);

/// This is the library's own style. It looks better, but it does not survive every key.
[[nodiscard]] std::string formatted(const toml::table& table);

/// A table with a header of its own, or one that dotted keys make, has no single place in the text.
[[nodiscard]] bool hasOnePlace(const toml::node& node);

}  // namespace platform
