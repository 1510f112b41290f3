#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Something in a settings file that does not do what whoever wrote it may have meant.
struct SettingsProblem {
  std::size_t line;  ///< Counted from 1.
  std::string text;  ///< For people.
};

/// What is wrong with a settings file, in the order of its lines: what cannot be read, keys that
/// nobody knows, values of a kind that their setting has not, and values beyond its limits; and
/// what counts instead. `known` has each setting with a value of its kind, those of the table
/// `history` as "history.enabled"; `std::monostate` stands for a table. `meanings` tells what
/// counts for a value.
[[nodiscard]] std::vector<SettingsProblem> examineSettings(
    std::string_view text, const tidewell::PropertyDictionary& known,
    const tidewell::SettingMeanings& meanings);

}  // namespace platform
