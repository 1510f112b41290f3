#include "Staylit/HoldWatch.h"

#include <utility>
#include <variant>

namespace staylit {
namespace {

bool wantsAHold(const EngineStatus& status) {
  return std::holds_alternative<EngineStatus::Holding>(status.value) ||
         std::holds_alternative<EngineStatus::Winding>(status.value);
}

}  // namespace

HoldWatch::HoldWatch(StaylitEngine& engine, tidewell::PowerManagement& power,
                     std::function<void()> tellThatNothingHolds)
    : engine_(engine),
      power_(power),
      tell_(std::move(tellThatNothingHolds)),
      // The engine publishes its status after each decision, when it has already held or released.
      subscription_(engine.status().observe([this](const EngineStatus& next) { look(next); })) {}

void HoldWatch::look(const EngineStatus& next) {
  const bool isGranted = engine_.isHolding() && power_.isGranted();
  if (isGranted) isTold_ = false;
  if (isGranted || !wantsAHold(next)) {
    ticksInVain_ = 0;
    return;
  }
  if (++ticksInVain_ < kTicks || isTold_) return;
  isTold_ = true;
  tell_();
}

}  // namespace staylit
