#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/EngineStatus.h"
#include "Staylit/Published.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/SleepController.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Decides whether the machine must stay awake. The one source of truth about what the program
/// does.
///
/// Every two seconds it looks at the power situation and at all applications, decides, drives the
/// sleep controller and publishes the outcome.
///
/// One owner. Main thread only, observers included. The ports must outlive the engine, and must be
/// the installed ones. The engine reports no errors: when a hold fails, the sleep controller logs
/// that, and the next tick tries again. Destroying the engine releases the hold. After that the
/// timer and the system's notifications of sleep and wake do nothing.
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

  /// Begins to watch for the system's sleep and wake, starts the timer, and ticks once before it
  /// returns. Call it once.
  void start();

  /// Decides once and publishes the outcome. Does nothing while paused. Anybody may call it between
  /// the ticks of the timer, to have a change count at once, but not from an observer.
  void tick();

  /// Ends the timer, so that no further tick comes by itself. Harmless when there is none.
  void stopTimer();

  /// Gives the hold back, whatever the status says, until a tick takes it again.
  void releaseHold();

  /// Whether the sleep controller has a hold. The system may still not grant it
  /// (`tidewell::PowerManagement::isGranted`).
  [[nodiscard]] bool isHolding() const { return sleep_.isHolding(); }

  [[nodiscard]] bool isPaused() const { return isPaused_; }
  /// Acts on every call, even when nothing changes. Pausing releases the hold. Resuming forgets the
  /// history and ticks before it returns.
  void setPaused(bool paused);

  /// Every tick assigns these four, even when their values stay the same: first `powerState`, then
  /// `busyApps`, then `assertingApps`, and `status` last, when the hold is already taken or
  /// released.
  Published<EngineStatus>& status() { return status_; }
  Published<std::vector<tidewell::BusyApp>>& busyApps() { return busyApps_; }
  /// The names of other programs that hold sleep assertions of their own.
  Published<std::vector<std::string>>& assertingApps() { return assertingApps_; }
  Published<tidewell::PowerState>& powerState() { return powerState_; }

  /// What the last tick saw, on which the engine's decision rests.
  [[nodiscard]] const tidewell::ActivityMonitor& monitor() const { return monitor_; }

  /// From now on `listener`, which may be null, is told what each tick sees, before the four values
  /// are assigned, except `powerState`. It must outlive the engine or be taken back.
  void setTickListener(tidewell::TickListener* listener) { monitor_.setListener(listener); }

  /// When the current spell without work began; absent while something works.
  [[nodiscard]] std::optional<tidewell::Moment> quietSince() const { return quietSince_; }
  /// The moment at which the last tick without work measured how long the spell has lasted.
  [[nodiscard]] tidewell::Moment quietJudgedAt() const { return quietJudgedAt_; }

 private:
  void observeSystemSleep();
  void passBlocked(const tidewell::PowerPolicy& policy);
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
  tidewell::Moment quietJudgedAt_;
  tidewell::WeakReferenceSource<StaylitEngine> self_{*this};  ///< For the timer and the observers.
};

}  // namespace staylit
