#include "Platform/MacOS/Sleep/AssertionDescription.h"

#include <cstdint>
#include <string>

namespace platform {

tidewell::ListedAssertion listedAssertion(const tidewell::PropertyDictionary& description) {
  using tidewell::valueOf;
  return {valueOf<std::string>(description, "AssertType").value_or(""),
          valueOf<std::int64_t>(description, "AssertLevel"),
          valueOf<std::string>(description, "AssertName").value_or("")};
}

}  // namespace platform
