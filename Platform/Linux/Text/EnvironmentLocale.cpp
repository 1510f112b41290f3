#include "Platform/Linux/Text/EnvironmentLocale.h"

#include <cstdlib>

namespace platform {

std::string environmentLocale(const char* purpose) {
  for (const char* variable : {"LC_ALL", purpose, "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && value[0] != '\0') return value;
  }
  return {};
}

}  // namespace platform
