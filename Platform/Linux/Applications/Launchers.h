#pragma once

#include <string_view>

namespace platform {

/// Whether the program with the file name `name` is a shell, an interpreter or a starter, which
/// runs other programs. A process of such a program does not tell the application. A version at the
/// end of the name makes no difference.
[[nodiscard]] bool isLauncher(std::string_view name);

}  // namespace platform
