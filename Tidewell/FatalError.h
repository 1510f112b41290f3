#pragma once

namespace tidewell {

/// Ends the process at once with `message` on standard error: for what cannot happen in a program
/// without a defect. Safe from any thread. Assertions that keep the machine awake die with it.
[[noreturn]] void fatalError(const char* message);

}  // namespace tidewell
