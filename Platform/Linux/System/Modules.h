#pragma once

#include <string>

namespace platform {

/// Loads a part of the program that lies in a file of its own, beside the program or where it is
/// installed, and returns the address of `symbol` in it. Null, and a line in the log, when that
/// fails. What was loaded stays. Any thread.
void* loadFromModule(const std::string& file, const char* symbol);

}  // namespace platform
