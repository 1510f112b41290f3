#pragma once

#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace staylit {

/// Notices that the engine wants the machine awake and the system does not grant it.
///
/// Says so once, after a few looks of the engine in a row without a grant, since a service may be
/// about to restart; and not again before something was granted. Main thread only; the engine and
/// `power` must outlive it.
class HoldWatch {
 public:
  HoldWatch(StaylitEngine& engine, tidewell::PowerManagement& power,
            std::function<void()> tellThatNothingHolds);

 private:
  static constexpr int kLooks = 6;

  void look(const EngineStatus& next);

  StaylitEngine& engine_;
  tidewell::PowerManagement& power_;
  std::function<void()> tell_;
  int looksInVain_ = 0;
  bool isTold_ = false;
  Subscription subscription_;
};

}  // namespace staylit
