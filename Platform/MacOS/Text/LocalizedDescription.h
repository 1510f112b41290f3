#pragma once

#include <string>

namespace platform {

/// What the system says, in the user's language, of the error number of a system call. Any thread.
std::string localizedDescription(int errorNumber);

}  // namespace platform
