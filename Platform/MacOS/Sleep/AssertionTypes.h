#pragma once

#include <cstdint>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// The level of an assertion that is switched on.
inline constexpr std::uint32_t kAssertionLevelOn = 255;

/// What the system's power management calls an assertion of this kind.
constexpr const char* assertionType(tidewell::AssertionKind kind) {
  return kind == tidewell::AssertionKind::system ? "PreventUserIdleSystemSleep"
                                                 : "PreventUserIdleDisplaySleep";
}

}  // namespace platform
