#pragma once

#include <cstdint>
#include <functional>

#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// A toggle whose change counts only once what it asks for was done.
///
/// When that fails, the toggle flips back, and since this is a change like any other, it is acted
/// upon in its turn, later on the main loop; when that fails as well, what the user wanted is tried
/// once more. After the third failure the toggle shows what is stored, and rests until the user
/// changes it. Main thread only; the loop must outlive it.
class GuardedToggle {
 public:
  /// Does what a change to `on` asks for, and then calls `succeeded` or `failed`, at once or later.
  using Apply = std::function<void(bool on)>;
  GuardedToggle(bool isOn, tidewell::MainLoop& mainLoop, Apply apply);
  GuardedToggle(const GuardedToggle&) = delete;
  GuardedToggle& operator=(const GuardedToggle&) = delete;

  [[nodiscard]] bool isOn() const { return isOn_; }
  /// Whether an attempt has failed since the user changed it.
  [[nodiscard]] bool hasFailed() const { return failures_ > 0; }
  /// Grows with every change, so that whoever answers late sees whether the answer is still wanted.
  [[nodiscard]] std::int64_t changes() const { return changes_; }

  /// The user changed it: `act` is to be called next. What was to follow a failure is forgotten.
  void change(bool on);
  void act() { apply_(isOn_); }

  /// How `apply` ended.
  void succeeded() { failures_ = 0; }
  /// `stored` is what the store says, where the change never came.
  void failed(bool on, bool stored);

  /// Shows `on` without acting on it: it became so by itself.
  void show(bool on);

 private:
  static constexpr int kMostAttempts = 3;

  void set(bool on);

  bool isOn_;
  std::int64_t changes_ = 0;
  int failures_ = 0;  ///< Since the user's own change.
  tidewell::MainLoop& mainLoop_;
  Apply apply_;
  tidewell::WeakReferences<GuardedToggle> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit
