#pragma once

namespace platform {

/// What an assertion keeps the machine from doing when nobody touches it.
enum class HoldKind {
  /// Going to sleep; the screen may go blank.
  system,
  /// Blanking the screen.
  display,
};

}  // namespace platform
