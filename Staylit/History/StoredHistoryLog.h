#pragma once

#include "Staylit/History/HistoryLog.h"
#include "Tidewell/Ports/LineStore.h"

namespace staylit {

/// A history whose events are lines of a store, which must outlive it. A start learns from the
/// store when the run before was certainly alive.
class StoredHistoryLog : public HistoryLog {
 public:
  explicit StoredHistoryLog(tidewell::LineStore& store) : store_(store) {}

  void append(const HistoryEvent& event) override;
  void refresh() override { store_.refresh(); }

 private:
  tidewell::LineStore& store_;
};

}  // namespace staylit
