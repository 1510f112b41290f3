#pragma once

#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace staylit {

/// Notices that the engine wants the machine awake and the system does not grant the hold.
///
/// Calls `tellThatNothingHolds` once, after several ticks in a row without a grant: a service may
/// just be about to restart. Calls it again only after a hold was granted in between. Main thread
/// only; the engine and `power` must outlive it.
class HoldWatch {
 public:
  HoldWatch(StaylitEngine& engine, tidewell::PowerManagement& power,
            std::function<void()> tellThatNothingHolds);

  /// Whether the machine is to be awake after the last tick, and nothing grants the hold.
  [[nodiscard]] bool isInVain() const { return ticksInVain_ > 0; }

 private:
  static constexpr int kTicks = 6;

  void look(const EngineStatus& next);

  StaylitEngine& engine_;
  tidewell::PowerManagement& power_;
  std::function<void()> tell_;
  int ticksInVain_ = 0;
  bool isTold_ = false;
  Subscription subscription_;
};

}  // namespace staylit
