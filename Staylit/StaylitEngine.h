#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/EngineStatus.h"
#include "Staylit/Published.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/PowerState.h"
#include "Tidewell/SleepController.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// The program's main loop and the one source of truth about what the program does.
///
/// Every two seconds it looks at the power situation and at all applications, decides whether the
/// machine must stay awake, drives the sleep controller and publishes the outcome. One owner, main
/// thread only; the ports must outlive it, and must be the installed ones. It reports no errors:
/// when a hold fails, the sleep controller logs it and the next tick tries again. Destroying the
/// engine drops the hold.
class StaylitEngine {
 public:
  /// How often the engine ticks, and how late a tick may be.
  static constexpr tidewell::Seconds kInterval{2.0};
  static constexpr tidewell::Seconds kTolerance{0.5};

  /// Starts nothing.
  explicit StaylitEngine(tidewell::Ports& ports);
  ~StaylitEngine();
  StaylitEngine(const StaylitEngine&) = delete;
  StaylitEngine& operator=(const StaylitEngine&) = delete;

  /// Begins to watch for the system's sleep and wake, starts the timer and ticks once. Call it
  /// once.
  void start();

  /// One decision pass. Does nothing while paused.
  void tick();

  /// Ends the timer, so that no further tick comes by itself. Harmless when there is none.
  void stopTimer();

  /// Gives the hold back, whatever the status says, until a tick takes it again.
  void releaseHold();

  /// Whether the sleep controller has a hold, as far as the system said.
  [[nodiscard]] bool isHolding() const { return sleep_.isHolding(); }

  [[nodiscard]] bool isPaused() const { return isPaused_; }
  /// Acts on every call, even when nothing changes: pausing releases the hold; resuming forgets the
  /// history and ticks at once.
  void setPaused(bool paused);

  /// These are assigned on every tick, even when their values stay the same.
  Published<EngineStatus>& status() { return status_; }
  Published<std::vector<tidewell::BusyApp>>& busyApps() { return busyApps_; }
  /// Names of other programs that hold sleep assertions of their own.
  Published<std::vector<std::string>>& assertingApps() { return assertingApps_; }
  Published<tidewell::PowerState>& powerState() { return powerState_; }

  /// What the last tick saw, for those who want to know what the decisions rest on.
  [[nodiscard]] const tidewell::ActivityMonitor& monitor() const { return monitor_; }

 private:
  void observeSystemSleep();
  void passBlocked(std::string reason);
  void passQuiet();
  void passWorking();
  static std::string holdReason(const std::vector<std::string>& names);

  tidewell::Ports& ports_;
  Published<EngineStatus> status_;
  Published<std::vector<tidewell::BusyApp>> busyApps_;
  Published<std::vector<std::string>> assertingApps_;
  Published<tidewell::PowerState> powerState_;
  bool isPaused_ = false;
  tidewell::ActivityMonitor monitor_;
  tidewell::SleepController sleep_;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  std::optional<tidewell::Moment> quietSince_;  ///< When the current spell without work began.
  tidewell::WeakReferences<StaylitEngine> self_{*this};  ///< For the timer and the observers.
};

}  // namespace staylit
