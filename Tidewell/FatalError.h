#pragma once

namespace tidewell {

/// Ends the process at once with `message` on standard error. For what can happen only when the
/// program has a defect. Safe from any thread. The sleep assertions end with the process.
[[noreturn]] void fatalError(const char* message);

}  // namespace tidewell
