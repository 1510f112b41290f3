#include "Tidewell/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace tidewell {

void fatalError(const char* message) {
  std::fprintf(stderr, "Staylit: fatal error: %s\n", message);
  std::abort();
}

}  // namespace tidewell
