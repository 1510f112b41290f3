#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Whether a key with such characters alone needs no quotes.
[[nodiscard]] bool isBareKeyCharacter(char character);

/// `key` as TOML writes it: bare where it may be, else quoted.
[[nodiscard]] std::string tomlKey(std::string_view key);

/// `value` as TOML writes it. A real always reads back as a real, and exactly; text that is not
/// valid UTF-8 is mended. A long list stands one text a line. Empty for a value of no type.
[[nodiscard]] std::string tomlLiteral(const tidewell::PropertyValue& value);

}  // namespace platform
