#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Something in a settings file that does not do what whoever wrote it may have meant.
struct SettingsProblem {
  std::size_t line;  ///< Counted from 1.
  std::string text;  ///< For people. Holds names and no values.
};

/// What is wrong with a settings file, in the order of its lines: what cannot be read, keys that
/// nobody knows, and values of a kind that their setting has not. `known` has each setting with a
/// value of its kind; `std::monostate` stands for a table.
[[nodiscard]] std::vector<SettingsProblem> examineSettings(
    std::string_view text, const tidewell::PropertyDictionary& known);

}  // namespace platform
