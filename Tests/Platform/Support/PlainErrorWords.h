#pragma once

#include <string>
#include <system_error>

namespace platform::testing {

/// The words of the C library.
inline std::string plainErrorWords(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

}  // namespace platform::testing
