#pragma once

#include <optional>
#include <string_view>

#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// What was found where the lines of the history are kept.
struct StoredLines {
  std::string_view text;
  std::optional<tidewell::WallTime> lastWritten;
  bool isInUse = false;  ///< Whether a program is there that writes it now.
};

/// The events in `stored`, read at `now`. Lines that are torn, or tell of what only a later version
/// knows, are left out.
[[nodiscard]] History historyIn(const StoredLines& stored, tidewell::WallTime now);

}  // namespace staylit
