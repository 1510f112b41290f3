#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Splits the command line of a desktop file's `Exec` into words, at blanks outside of double
/// quotes. Within double quotes, a backslash makes the next character literal. Codes such as "%U"
/// stay. The first word is the program. There are no words when the line is empty or a quote stays
/// open.
[[nodiscard]] std::vector<std::string> execWords(std::string_view exec);

}  // namespace platform
