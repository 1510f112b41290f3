#pragma once

#include <string>
#include <system_error>

namespace platform {

/// Makes a text for people from the error number of a system call. Any thread.
using ErrorDescription = std::string (*)(int errorNumber);

/// The text of the C library. macOS has longer ones.
[[nodiscard]] inline std::string describeError(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

}  // namespace platform
