#pragma once

#include "Staylit/History/HistoryEvent.h"

namespace staylit {

/// Where the events of a history go. Main thread only; no call waits or fails.
class HistoryLog {
 public:
  virtual ~HistoryLog() = default;

  virtual void append(const HistoryEvent& event) = 0;

  /// Leaves a trace that the program is alive, without an event.
  virtual void refresh() = 0;
};

}  // namespace staylit
