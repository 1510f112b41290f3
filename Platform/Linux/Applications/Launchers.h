#pragma once

#include <string_view>

namespace platform {

/// Whether the program of file name `name` runs programs of others (a shell, an interpreter, a
/// starter), so that a process of it tells nothing about the application. A version at the end of
/// the name makes no difference.
[[nodiscard]] bool isLauncher(std::string_view name);

}  // namespace platform
