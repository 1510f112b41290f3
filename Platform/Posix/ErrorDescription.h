#pragma once

#include <string>

namespace platform {

/// Puts the error number of a system call into words for people to read, as the one system or the
/// other words it. Any thread.
using ErrorDescription = std::string (*)(int errorNumber);

}  // namespace platform
