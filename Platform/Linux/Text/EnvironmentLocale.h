#pragma once

#include <string>

namespace platform {

/// The user's language in the environment ("de_DE.UTF-8"). `purpose` is a variable such as
/// `LC_MESSAGES` or `LC_COLLATE`. The language comes from `LC_ALL`, or else from that variable, or
/// else from `LANG`. Empty when none is set.
[[nodiscard]] std::string environmentLocale(const char* purpose);

}  // namespace platform
