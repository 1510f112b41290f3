#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// The identifier of the application that the process is; empty for a process that is none. Main
/// thread only.
[[nodiscard]] std::string applicationIdentifier(std::int32_t pid);

}  // namespace platform
