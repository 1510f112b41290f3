#pragma once

#include <filesystem>

namespace staylit {

/// Where the icon theme with the status symbols lies: beside the program or where it is installed.
/// Empty when it is in neither place.
std::filesystem::path iconFolder();

}  // namespace staylit
