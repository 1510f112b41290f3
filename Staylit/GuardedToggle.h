#pragma once

#include <cstdint>
#include <functional>

#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// A toggle whose change counts only once the system has done what the change asks for.
///
/// When that fails, the toggle flips back. Since flipping back is a change like any other, the
/// system is asked for it as well, later on the main loop. When that fails too, the user's wish is
/// tried once more. After the third failure the toggle shows what is stored, and rests until the
/// user changes it. Main thread only; the loop must outlive it.
class GuardedToggle {
 public:
  /// Asks the system for what a change to `on` means, and then calls `succeeded` or `failed`, at
  /// once or later.
  using Apply = std::function<void(bool on)>;
  GuardedToggle(bool isOn, tidewell::MainLoop& mainLoop, Apply apply);
  GuardedToggle(const GuardedToggle&) = delete;
  GuardedToggle& operator=(const GuardedToggle&) = delete;

  [[nodiscard]] bool isOn() const { return isOn_; }
  /// Whether an attempt has failed since the user changed the toggle.
  [[nodiscard]] bool hasFailed() const { return failures_ > 0; }
  /// Grows with every change, so that a late answer can tell whether it is still wanted.
  [[nodiscard]] std::int64_t changes() const { return changes_; }

  /// The user changed the toggle; call `act` next. Anything that was to follow a failure is
  /// forgotten.
  void change(bool on);
  void act() { apply_(isOn_); }

  /// The system did what the change asked for.
  void succeeded() { failures_ = 0; }

  /// The system did not do what the change to `on` asked for, so the stored value is still
  /// `stored`.
  void failed(bool on, bool stored);

  /// Shows `on` without asking the system: the value changed by itself.
  void show(bool on);

 private:
  static constexpr int kMostAttempts = 3;

  void set(bool on);

  bool isOn_;
  std::int64_t changes_ = 0;
  int failures_ = 0;  ///< Since the user's own change.
  tidewell::MainLoop& mainLoop_;
  Apply apply_;
  tidewell::WeakReferenceSource<GuardedToggle> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit
