#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Whether a key may have this character without quotes.
[[nodiscard]] bool isBareKeyCharacter(char character);

/// `key` as TOML writes it: without quotes where that is possible.
[[nodiscard]] std::string tomlKey(std::string_view key);

/// `value` as TOML writes it. Reading a real number back gives exactly the same number. Text that
/// is not valid UTF-8 is mended. A long list has one text in each line. Empty for a value without a
/// type.
[[nodiscard]] std::string tomlLiteral(const tidewell::PropertyValue& value);

}  // namespace platform
