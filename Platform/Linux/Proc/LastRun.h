#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// How long no thread of process `pid` has run, as the scheduler knows it, to some hundredths of a
/// second; time in which the machine slept is not in it. Absent where the kernel does not tell.
///
/// Each processor has a clock of its own for this, which only who runs there can read. So the
/// calling thread moves to the processors of these threads, and back.
std::optional<tidewell::Seconds> timeSinceLastRun(ProcFileSystem& proc, std::int32_t pid);

/// When a thread ran last, by its `sched` file, in seconds of its processor's clock. Absent when
/// the file has no such line, or says that it is not known.
std::optional<double> parseLastRun(std::string_view text);

/// The processor on which a thread ran last, by its `stat` file (proc(5)).
std::optional<int> parseProcessor(std::string_view text);

}  // namespace platform
