#pragma once

#include <string_view>

namespace platform {

/// Whether the program with the file name `name` runs programs of others (a shell, an interpreter,
/// a starter). A process of such a program tells nothing about the application. A version at the
/// end of the name makes no difference.
[[nodiscard]] bool isLauncher(std::string_view name);

}  // namespace platform
