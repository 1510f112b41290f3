#include "Staylit/History/HistoryReader.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace staylit {

History historyIn(const StoredLines& stored, tidewell::WallTime now) {
  History history{{}, stored.lastWritten, stored.isInUse, now};
  std::string_view rest = stored.text;
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find('\n'), rest.size());
    if (auto event = historyEvent(rest.substr(0, length))) {
      history.events.push_back(*std::move(event));
    }
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  return history;
}

}  // namespace staylit
