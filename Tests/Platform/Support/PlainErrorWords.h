#pragma once

#include <string>
#include <system_error>

namespace platform::testing {

/// The C library's text for an error number.
inline std::string plainErrorWords(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

}  // namespace platform::testing
