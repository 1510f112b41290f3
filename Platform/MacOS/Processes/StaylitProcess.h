#pragma once

#include <cstdint>

namespace platform {

/// Whether a process is a Staylit, by its program or by its application's identifier: the same
/// program as this one, or one of the same name, whichever user runs it. Main thread only.
[[nodiscard]] bool isAStaylit(std::int32_t pid);

}  // namespace platform
