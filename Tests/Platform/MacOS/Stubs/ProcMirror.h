#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Tests/Platform/MacOS/Stubs/Kernel.h"

namespace platform::stub {

/// The processes of this machine, read from /proc and told in a Mac's terms; a unit of time is
/// `nanosecondsPerUnit`.
std::vector<std::int32_t> mirroredPids();
std::optional<Process> mirroredProcess(std::int32_t pid, double nanosecondsPerUnit);

}  // namespace platform::stub
