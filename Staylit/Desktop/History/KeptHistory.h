#pragma once

#include "Staylit/History/HistoryPrinter.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// Reads the user's history as it is now, whether the program runs or not. Main thread only; a slow
/// disk makes it slow. What cannot be read stands in `error`.
[[nodiscard]] HistoryPrinter::Source readHistory();

/// Whether the output goes to a terminal whose user has nothing against colours (`NO_COLOR`).
[[nodiscard]] bool mayBeColoured(tidewell::Console& console);

}  // namespace staylit
