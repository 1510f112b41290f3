#pragma once

#include <string_view>

#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace staylit {

/// Reads `value` as the program reads the setting `key`, whatever its type. The meaning of a key
/// that is no setting is empty.
[[nodiscard]] tidewell::SettingMeaning meaningOfSetting(std::string_view key,
                                                        const tidewell::PropertyValue& value);

}  // namespace staylit
