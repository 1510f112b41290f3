#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

/// What `/proc/<pid>/io` says: bytes that really went to or came from a block device, of the
/// process and of the children that it has reaped.
struct ProcIo {
  std::uint64_t readBytes = 0;
  std::uint64_t writeBytes = 0;
};

/// Parses the file. Absent unless both counters are there.
std::optional<ProcIo> parseProcIo(std::string_view text);

}  // namespace platform
