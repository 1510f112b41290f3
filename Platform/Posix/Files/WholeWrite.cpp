#include "Platform/Posix/Files/WholeWrite.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace platform {

bool writeWhole(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace platform
