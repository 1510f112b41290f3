#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

/// What `/proc/<pid>/io` tells: the bytes that really came from a block device or went to one. They
/// include those of the children that the process has reaped.
struct ProcIo {
  std::uint64_t readBytes = 0;
  std::uint64_t writeBytes = 0;
};

/// Parses the file. Absent unless both counters are there.
std::optional<ProcIo> parseProcIo(std::string_view text);

}  // namespace platform
