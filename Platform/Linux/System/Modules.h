#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// Where such a part lies: beside the program or where it is installed. Empty when it is in neither
/// place. Any thread.
[[nodiscard]] std::filesystem::path moduleFile(const std::string& file);

/// Loads a part of the program that lies in a file of its own, beside the program or where it is
/// installed, and returns the address of `symbol` in it. Null, and a line in the log, when that
/// fails. What was loaded stays. Any thread.
void* loadFromModule(const std::string& file, const char* symbol);

}  // namespace platform
