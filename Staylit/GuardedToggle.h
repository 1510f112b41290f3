#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "Tidewell/Ports/MainLoop.h"

namespace staylit {

/// A toggle whose change counts only once what it asks for was done.
///
/// When that fails, the toggle flips back, and since this is a change like any other, it is acted
/// upon in its turn, later on the main loop. What goes on failing in both directions is tried at
/// leisure, until it is given up. Main thread only; the loop must outlive it.
class GuardedToggle {
 public:
  /// `apply` does what a change to `on` asks for, and then calls `succeeded` or `failed`.
  using Apply = std::function<void(bool on)>;
  GuardedToggle(bool isOn, tidewell::MainLoop& mainLoop, Apply apply);
  GuardedToggle(const GuardedToggle&) = delete;
  GuardedToggle& operator=(const GuardedToggle&) = delete;

  [[nodiscard]] bool isOn() const { return isOn_; }
  /// Whether an attempt has failed since the user changed it.
  [[nodiscard]] bool hasFailed() const { return failures_ > 0; }
  /// Whether it was tried in vain so often that its next attempt waits.
  [[nodiscard]] bool isWaiting() const { return repeat_ != nullptr; }

  /// The user changed it: `act` is to be called next, and whatever waits is forgotten.
  void change(bool on);
  void act() { apply_(isOn_); }

  /// How `apply` ended.
  void succeeded() { settle(); }
  void failed(bool on);

  /// From here on, until the user changes it again, nothing is tried at leisure. A toggle that
  /// waits shows `stored` from now on.
  void giveUp(bool stored);

 private:
  /// After so many failures in a row, which a person at a prompt takes time for, the next attempts
  /// come one interval apart.
  static constexpr int kPromptRepeats = 4;
  static constexpr tidewell::Seconds kLateRepeat{30};

  void set(bool on);
  void settle();
  [[nodiscard]] std::function<void()> actLater();

  bool isOn_;
  std::optional<bool> givenUp_;  ///< What is stored, once it was given up.
  std::int64_t changes_ = 0;     ///< So that work for later sees whether it is still wanted.
  int failures_ = 0;             ///< In a row, since the user's own change.
  tidewell::MainLoop& mainLoop_;
  Apply apply_;
  std::unique_ptr<tidewell::RepeatingTimer> repeat_;
  /// What work for later holds instead of the toggle: gone when it is.
  std::shared_ptr<GuardedToggle*> self_;
};

}  // namespace staylit
