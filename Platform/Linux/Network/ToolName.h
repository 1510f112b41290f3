#pragma once

#include <string>
#include <string_view>

namespace platform {

/// A process's name as it may stand in a line of the tool: commas, control characters and bytes
/// that are not UTF-8 become underscores. Appended to `line`.
void appendToolName(std::string& line, std::string_view name);

}  // namespace platform
