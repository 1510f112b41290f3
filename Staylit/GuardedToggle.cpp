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
  isGivenUp_ = false;
  set(on);
  settle();
}

void GuardedToggle::failed(bool on) {
  set(!on);
  if (++failures_ <= kPromptRepeats) return mainLoop_.async(actLater());
  // Nobody is asked in between, or somebody declines for ever.
  repeat_ = isGivenUp_ ? nullptr : mainLoop_.scheduleRepeating(kLateRepeat, actLater());
}

/// Unless the user has changed it again by then: that was acted upon already.
std::function<void()> GuardedToggle::actLater() {
  return [weak = std::weak_ptr(self_), change = changes_] {
    const auto toggle = weak.lock();
    if (toggle && (*toggle)->changes_ == change) (*toggle)->act();
  };
}

void GuardedToggle::giveUp(bool stored) {
  isGivenUp_ = true;
  if (!isWaiting()) return;
  settle();
  set(stored);
}

}  // namespace staylit
