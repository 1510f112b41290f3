#pragma once

#include <cstdint>
#include <string>

#include "Tidewell/Ports/PowerManagement.h"

namespace tidewell {

/// Holds the machine awake: the only place where sleep assertions are taken and given back.
///
/// Owned by the engine; main thread only; `power` must outlive it. Cheap to call on every tick:
/// repeating a call changes nothing. What it held ends with it.
class SleepController {
 public:
  explicit SleepController(PowerManagement& power);
  ~SleepController();
  SleepController(const SleepController&) = delete;
  SleepController& operator=(const SleepController&) = delete;

  /// Whether a system assertion was created and not yet released.
  [[nodiscard]] bool isHolding() const { return isHolding_; }

  /// Keeps the machine awake under `reason`, which the system shows to people, and the display
  /// too if `keepScreenOn`. Failing to take the system assertion is logged and leaves
  /// `isHolding` false; the next call tries again. Failing to take the display's is silent.
  void hold(const std::string& reason, bool keepScreenOn);

  /// Gives back everything held.
  void release();

 private:
  void updateReason(const std::string& reason);
  void syncDisplayAssertion(const std::string& reason, bool keepScreenOn);
  void releaseAssertion(std::uint32_t& assertion);

  PowerManagement& power_;
  std::uint32_t systemAssertion_ = 0;   ///< 0: none.
  std::uint32_t displayAssertion_ = 0;  ///< 0: none. Only while holding.
  std::string currentReason_;           ///< The name that the system assertion carries.
  bool isHolding_ = false;
};

}  // namespace tidewell
