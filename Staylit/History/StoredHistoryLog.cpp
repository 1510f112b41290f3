#include "Staylit/History/StoredHistoryLog.h"

#include <optional>
#include <variant>

namespace staylit {

void StoredHistoryLog::append(const HistoryEvent& event) {
  store_.append([event](std::optional<tidewell::WallTime> lastWritten) {
    HistoryEvent written = event;
    if (auto* started = std::get_if<HistoryEvent::Started>(&written.what)) {
      started->lastSeen = lastWritten;
    }
    return textOf(written);
  });
}

}  // namespace staylit
