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
    refused,         ///< A process of another user: its program and its I/O may not be read.
    withoutProgram,  ///< A kernel thread, or a process that had ended before it was first seen.
  };

  /// What this pass has to read of a process.
  enum class Reading : std::uint8_t { none, afterRun, all };

  explicit TrackedProcess(std::int32_t identifier) : pid(identifier) {}

  std::int32_t pid;
  std::int32_t parentPid = 0;
  std::int32_t session = 0;
  std::int32_t group = 0;  ///< Its control group, by `ControlGroups`; 0 unless readable.
  std::uint64_t startTicks = 0;
  std::uint64_t cpuTime = 0;  ///< In the tracker's unit of CPU time.
  /// CPU time of the children that it has reaped, and of those that they have reaped.
  std::uint64_t reapedTicks = 0;
  ProcIo io;
  tidewell::SharedText path;  ///< As `programPath` made it; empty unless readable.
  std::size_t linkHash = 0;   ///< Hash of the `exe` link that `path` was made from.
  std::shared_ptr<const tidewell::RunningApplication> application;  ///< Null for none.
  std::array<char, 16> comm{};
  Access access = Access::withoutProgram;
  Reading due = Reading::none;
  bool reaps = false;  ///< Whether it has or had children, so that `reapedTicks` may grow.
  /// Grows with each reading of the path and the application.
  std::uint32_t programVersion = 0;
  /// How often the path and the application were read. A process joins its systemd unit and
  /// replaces its program a moment after its start, so they are read in two passes.
  std::uint8_t looks = 0;
  std::uint8_t quietPasses = 0;   ///< Passes since it last ran, counted while its files are open.
  std::uint8_t activePasses = 0;  ///< Passes in which it ran since its program was last looked at.
  /// The two files are kept open while the process runs often.
  Descriptor ioFile;
  Descriptor nameFile;  ///< `stat` if `reaps`, else `comm`.

  [[nodiscard]] std::string_view commText() const { return comm.data(); }
};

}  // namespace platform
