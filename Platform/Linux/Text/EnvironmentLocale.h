#pragma once

#include <string>

namespace platform {

/// The user's language for one purpose, as the environment names it ("de_DE.UTF-8"): `LC_ALL`, else
/// the variable of that purpose (`LC_MESSAGES`, `LC_COLLATE`), else `LANG`. Empty when none is set.
[[nodiscard]] std::string environmentLocale(const char* purpose);

}  // namespace platform
