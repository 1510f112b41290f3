#pragma once

#include <memory>
#include <optional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Pauses the engine, for a while or until somebody resumes it. Whoever resumes the engine, as the
/// menu does, also ends a pause that has an end.
///
/// Time in which the computer sleeps counts for the length of a pause. Main thread only; both
/// arguments must outlive it.
class PauseControl {
 public:
  PauseControl(StaylitEngine& engine, tidewell::Ports& ports);
  PauseControl(const PauseControl&) = delete;
  PauseControl& operator=(const PauseControl&) = delete;

  /// Pauses, or goes on pausing, for `length` from now. Without a length nothing ends the pause by
  /// itself.
  void pause(std::optional<tidewell::Seconds> length);
  /// Returns whether the engine was paused.
  bool resume();

  [[nodiscard]] bool isPaused() const { return engine_.isPaused(); }
  /// When the pause ends by itself; absent where it does not.
  [[nodiscard]] std::optional<tidewell::WallTime> until() const;

 private:
  struct End {
    tidewell::Moment moment;
    tidewell::WallTime wallTime;
  };

  void resumeWhenItIsTime();

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  std::optional<End> end_;  ///< Set exactly while a pause with an end lasts.
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  Subscription statusSubscription_;
  tidewell::WeakReferenceSource<PauseControl> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit
