#include "Staylit/GuardedToggle.h"

#include <utility>

namespace staylit {

GuardedToggle::GuardedToggle(bool isOn, tidewell::MainLoop& mainLoop, Apply apply)
    : isOn_(isOn), mainLoop_(mainLoop), apply_(std::move(apply)) {}

void GuardedToggle::set(bool on) {
  isOn_ = on;
  ++changes_;
}

void GuardedToggle::change(bool on) {
  set(on);
  failures_ = 0;
}

void GuardedToggle::show(bool on) {
  if (isOn_ != on) change(on);
}

void GuardedToggle::failed(bool on, bool stored) {
  if (++failures_ >= kMostAttempts) return set(stored);
  set(!on);
  mainLoop_.async([toggle = self_.make(), change = changes_] {
    // If the user has changed the toggle again by then, that change has been acted upon already.
    if (toggle && toggle->changes_ == change) toggle->act();
  });
}

}  // namespace staylit
