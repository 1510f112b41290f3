#pragma once

#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace staylit {

/// Notices that the engine wants the machine awake and the system does not grant the hold.
///
/// Tells so once, after the engine has looked several times in a row without a grant, because a
/// service may be about to restart. It does not tell again before a hold was granted. Main thread
/// only; the engine and `power` must outlive it.
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
