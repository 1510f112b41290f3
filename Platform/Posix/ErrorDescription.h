#pragma once

#include <string>

namespace platform {

/// Makes a text for people from the error number of a system call. Linux and macOS have different
/// texts. Any thread.
using ErrorDescription = std::string (*)(int errorNumber);

}  // namespace platform
