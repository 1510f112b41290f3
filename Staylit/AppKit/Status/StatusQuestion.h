#pragma once

#include "Staylit/StatusPrinter.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// Asks the Staylit that runs in the login session for its status and prints the answer: once, or
/// every two seconds what has changed, until a signal ends the process or nobody reads any more.
/// Starts none. Returns the status with which to end. Main thread only.
int tellStatus(const StatusRequest& request, tidewell::Console& console, tidewell::Clock& clock);

}  // namespace staylit
