#pragma once

#include <cstdint>
#include <string>

#include "Tidewell/Ports/PowerManagement.h"

namespace tidewell {

/// Keeps the machine awake. This is the only place where sleep assertions are taken and given back.
///
/// Owned by the engine. Main thread only; `power` must outlive it. Every call may be repeated on
/// every tick: a repetition asks the system for nothing. The destructor releases what is held.
class SleepController {
 public:
  explicit SleepController(PowerManagement& power);
  ~SleepController();
  SleepController(const SleepController&) = delete;
  SleepController& operator=(const SleepController&) = delete;

  /// Whether a system assertion was created and not yet released. The system may still not grant it
  /// (`PowerManagement::isGranted`).
  [[nodiscard]] bool isHolding() const { return isHolding_; }

  /// Takes the system assertion, or gives the one that is held the name `reason`, which the system
  /// shows to people. Then takes or releases the display assertion, as `keepScreenOn` says; it
  /// keeps the name with which it was taken. When the system assertion cannot be taken, that is
  /// logged, `isHolding` stays false, and the next call tries again. When the display assertion
  /// cannot be taken, nothing is logged, and the next call tries again.
  void hold(const std::string& reason, bool keepScreenOn);

  /// Releases both assertions. Harmless when none is held.
  void release();

 private:
  void updateReason(const std::string& reason);
  void syncDisplayAssertion(const std::string& reason, bool keepScreenOn);
  void releaseAssertion(std::uint32_t& assertion);

  PowerManagement& power_;
  std::uint32_t systemAssertion_ = 0;   ///< 0: none.
  std::uint32_t displayAssertion_ = 0;  ///< 0: none. There is one only while there is a system one.
  std::string currentReason_;           ///< The name that the system assertion carries.
  bool isHolding_ = false;
};

}  // namespace tidewell
