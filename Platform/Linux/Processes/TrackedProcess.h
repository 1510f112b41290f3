#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "Platform/Linux/Proc/ProcIo.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/SharedText.h"

namespace platform {

/// One process and what was last read of it. Its identity is `pid` and `startTicks` together.
struct TrackedProcess {
  enum class Access : std::uint8_t {
    readable,
    refused,         ///< Another user's: neither its program nor its I/O may be read.
    withoutProgram,  ///< A kernel thread, or one that had ended when it was first seen.
  };

  /// What of a process is to be read on this pass.
  enum class Reading : std::uint8_t { none, afterRun, all };

  explicit TrackedProcess(std::int32_t identifier) : pid(identifier) {}

  std::int32_t pid;
  std::int32_t parentPid = 0;
  std::int32_t session = 0;
  std::uint64_t startTicks = 0;
  std::uint64_t cpuTime = 0;      ///< In the tracker's unit of CPU time.
  std::uint64_t reapedTicks = 0;  ///< CPU time of the children that it has reaped, and theirs.
  ProcIo io;
  tidewell::SharedText path;  ///< As `programPath` made it; empty unless readable.
  std::size_t linkHash = 0;   ///< Of the `exe` link that `path` was made from.
  std::shared_ptr<const tidewell::RunningApplication> application;  ///< Null for none.
  std::array<char, 16> comm{};
  Access access = Access::withoutProgram;
  Reading due = Reading::none;
  bool reaps = false;  ///< Has or had children, so that more of its time may be theirs.
  /// Grows whenever path and application were read.
  std::uint32_t programVersion = 0;
  /// How often its names were read. A process joins its unit, and replaces its program, a moment
  /// after it starts, so they are read on two passes.
  std::uint8_t looks = 0;
  std::uint8_t quietPasses = 0;   ///< Since it last ran, while its files are kept open.
  std::uint8_t activePasses = 0;  ///< Since its program was last looked at.
  /// Kept open while it runs often.
  Descriptor ioFile;
  Descriptor nameFile;  ///< `stat` of one that reaps, else `comm`.

  [[nodiscard]] std::string_view commText() const { return comm.data(); }
};

}  // namespace platform
