#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What `/proc/<pid>/stat` tells of a process, as far as it matters here (proc(5)).
struct ProcStat {
  std::string comm;  ///< The main thread's name: at most 15 bytes of any kind.
  char state = '?';  ///< 'Z' for a process that has ended and waits to be reaped.
  std::int32_t parentPid = 0;
  std::int32_t session = 0;
  std::int32_t terminal = 0;    ///< Device number of the controlling terminal, 0 for none.
  std::uint64_t userTicks = 0;  ///< In clock ticks, like all times here.
  std::uint64_t systemTicks = 0;
  /// The time of the children that it has reaped, and of those that they have reaped.
  std::uint64_t childUserTicks = 0;
  std::uint64_t childSystemTicks = 0;
  /// The time from the boot to the start. Together with the pid it identifies a process.
  std::uint64_t startTicks = 0;
};

/// Parses the one line of the file. The name stands in parentheses and may contain anything, even
/// parentheses and line feeds. Absent when a field is missing or is not a number.
std::optional<ProcStat> parseProcStat(std::string_view text);

}  // namespace platform
