#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// The path of a process's program, as the kernel has it, for every user's processes; empty for one
/// that has ended. Any thread.
[[nodiscard]] std::string programPath(std::int32_t pid);

}  // namespace platform
