#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What `/proc/<pid>/stat` says of a process, as far as it matters here (proc(5)).
struct ProcStat {
  std::string comm;  ///< The main thread's name: any bytes, 15 at most.
  char state = '?';  ///< 'Z' for one that has ended and waits to be reaped.
  std::int32_t parentPid = 0;
  std::int32_t session = 0;
  std::int32_t terminal = 0;    ///< Device number of the controlling terminal, 0 for none.
  std::uint64_t userTicks = 0;  ///< In clock ticks, as all times here.
  std::uint64_t systemTicks = 0;
  std::uint64_t childUserTicks = 0;  ///< Of the children that it has reaped, and theirs.
  std::uint64_t childSystemTicks = 0;
  std::uint64_t startTicks = 0;  ///< Since boot. With the pid, it identifies a process for good.
};

/// Parses the one line of the file. The name stands in parentheses and may hold anything, further
/// parentheses and line feeds included. Absent when a field is missing or is no number.
std::optional<ProcStat> parseProcStat(std::string_view text);

}  // namespace platform
