#pragma once

#include <functional>
#include <memory>

#include "Staylit/EngineStatus.h"
#include "Staylit/PauseControl.h"
#include "Staylit/Published.h"
#include "Staylit/StatusReport.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Says what the engine does, whenever somebody asks, and tells of changes.
///
/// A report is made only when it is asked for. From tick to tick this only compares the new status
/// with the one before and allocates nothing while they are the same. Main thread only; the engine
/// and the ports must outlive it, and the ports must be the installed ones.
class StatusReporter {
 public:
  StatusReporter(StaylitEngine& engine, tidewell::Ports& ports);

  [[nodiscard]] StatusReport report();

  /// From now on reports tell when `pause` ends. It must exist as long as reports are made.
  void tellEndOf(const PauseControl& pause) { pause_ = &pause; }

  /// `changed` is called from the main loop when the state, what works, the power source or the
  /// services' consent has changed, until the subscription is dropped. Figures, a countdown, and
  /// the order of the same applications are no change.
  [[nodiscard]] Subscription observe(std::function<void()> changed);

 private:
  void look(const EngineStatus& next);
  void tellLater();
  [[nodiscard]] tidewell::WallTime wallTimeOf(tidewell::Moment moment);
  void addHold(StatusReport& report);

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  EngineStatus told_;
  tidewell::PowerState toldPower_;
  bool toldGranted_;
  tidewell::Moment since_;
  const PauseControl* pause_ = nullptr;  ///< Null while nobody tells of one.
  bool isPosted_ = false;
  Published<int> changes_{0};  ///< Counts them.
  Subscription subscription_;
  tidewell::WeakReferenceSource<StatusReporter> self_{*this};  ///< For what is posted.
};

}  // namespace staylit
