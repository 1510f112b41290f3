#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The table of the settings file whose keys are settings too.
inline constexpr std::string_view kHistoryTable = "history";

/// Under which name the rest of the program knows a key of a table: "history.enabled".
[[nodiscard]] inline std::string nameInTable(std::string_view table, std::string_view key) {
  return std::string(table).append(1, '.').append(key);
}

}  // namespace platform
