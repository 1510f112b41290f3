#pragma once

#include <cstdint>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// The level of an assertion that is switched on: the system's `kIOPMAssertionLevelOn`, whose
/// header other systems, on which this is tested, do not have.
inline constexpr std::uint32_t kAssertionLevelOn = 255;

/// What the system's power management calls an assertion of this kind.
constexpr const char* assertionType(tidewell::AssertionKind kind) {
  switch (kind) {
    case tidewell::AssertionKind::display:
      return "PreventUserIdleDisplaySleep";
    case tidewell::AssertionKind::system:
      break;
  }
  return "PreventUserIdleSystemSleep";
}

}  // namespace platform
