#pragma once

#include "Staylit/History/PageRequest.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// Makes a page of the user's history, whether the program runs or not, and puts or shows it where
/// `request` wants it. Says on standard error what fails. Returns the status with which to end: 2
/// after a failure. Main thread only.
[[nodiscard]] int writeHistoryPage(const PageRequest& request, tidewell::Console& console);

}  // namespace staylit
