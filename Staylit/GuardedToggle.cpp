#include "Staylit/GuardedToggle.h"

#include <utility>

namespace staylit {

GuardedToggle::GuardedToggle(bool isOn, tidewell::MainLoop& mainLoop, Apply apply)
    : isOn_(isOn),
      mainLoop_(mainLoop),
      apply_(std::move(apply)),
      self_(std::make_shared<GuardedToggle*>(this)) {}

void GuardedToggle::set(bool on) {
  isOn_ = on;
  ++changes_;
}

void GuardedToggle::settle() {
  failures_ = 0;
  repeat_.reset();
}

void GuardedToggle::change(bool on) {
  givenUp_.reset();
  set(on);
  settle();
}

void GuardedToggle::failed(bool on) {
  set(!on);
  if (++failures_ <= kPromptRepeats) return mainLoop_.async(actLater());
  if (givenUp_) {
    settle();
    return set(*givenUp_);
  }
  // Nobody is asked in between, or somebody declines for ever.
  repeat_ = mainLoop_.scheduleRepeating(kLateRepeat, actLater());
}

/// Unless the user has changed it again by then: that was acted upon already.
std::function<void()> GuardedToggle::actLater() {
  return [weak = std::weak_ptr(self_), change = changes_] {
    const auto toggle = weak.lock();
    if (toggle && (*toggle)->changes_ == change) (*toggle)->act();
  };
}

void GuardedToggle::giveUp(bool stored) {
  givenUp_ = stored;
  if (!isWaiting()) return;
  // Its failures stay counted: an attempt may be under way.
  repeat_.reset();
  set(stored);
}

}  // namespace staylit
