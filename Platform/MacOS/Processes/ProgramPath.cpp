#include "Platform/MacOS/Processes/ProgramPath.h"

#include <libproc.h>

#include <array>
#include <cstddef>

namespace platform {

std::string programPath(std::int32_t pid) {
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> buffer{};
  const int length = proc_pidpath(pid, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
  return length < 1 ? "" : std::string(buffer.data(), static_cast<std::size_t>(length));
}

}  // namespace platform
