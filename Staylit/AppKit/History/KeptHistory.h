#pragma once

#include "Staylit/History/HistoryPrinter.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// Prints the user's history, whether the program runs or not. Returns the status with which to
/// end. Main thread only.
int tellHistory(const HistoryRequest& request, tidewell::Ports& ports);

/// How a history is drawn on the terminal, if there is one.
[[nodiscard]] HistoryTexts::Style terminalStyle(tidewell::Ports& ports);

}  // namespace staylit
