#include "Staylit/SettingsView.h"

#include <algorithm>
#include <utility>

#include "Staylit/Prefs.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using Slider = SettingsView::Slider;
using Toggle = SettingsView::Toggle;

tidewell::Defaults& defaults() {
  return Prefs::shared().defaults();
}

Slider slider(std::int64_t stored, std::int64_t minimum, std::int64_t maximum, std::int64_t step) {
  return {std::clamp(stored, minimum, maximum), minimum, maximum, step};
}

/// The nearest to `value` of all that the slider offers.
std::int64_t offered(const Slider& slider, std::int64_t value) {
  const std::int64_t above = std::clamp(value, slider.minimum, slider.maximum) - slider.minimum;
  return slider.minimum + (above + slider.step / 2) / slider.step * slider.step;
}

std::string watching() {
  const std::size_t ignored = Prefs::shared().ignoredApps().size();
  return ignored == 0 ? "everything" : "all but " + std::to_string(ignored);
}

}  // namespace

SettingsView::SettingsView(StaylitEngine& engine, tidewell::Ports& ports)
    : engine_(engine),
      ports_(ports),
      grace_(defaults().integer(keys::graceSeconds)),
      battery_(defaults().integer(keys::batteryThreshold)),
      respectLowPower_(defaults().boolean(keys::respectLowPower)),
      keepScreenOn_(defaults().boolean(keys::keepScreenOn)),
      honorAssertions_(defaults().boolean(keys::honorAppAssertions)),
      lidClosed_{.isOn = defaults().boolean(keys::allowLidClosed), .repeat = nullptr},
      launchAtLogin_{.isOn = defaults().boolean(keys::launchAtLogin), .repeat = nullptr},
      changes_(engine, *ports.mainLoop),
      self_(std::make_shared<SettingsView*>(this)) {}

SettingsView::~SettingsView() = default;

std::vector<SettingsView::Section> SettingsView::form() const {
  return {
      sleepSection(),
      batterySection(),
      {"Detection",
       {{Control::honorAssertions, "Trust apps that ask to stay awake", Toggle{honorAssertions_},
         "", "Browsers raise this during downloads; editors during exports."}}},
      {"Apps",
       {{Control::watching, "Watching", Value{watching()}, "",
         "Choose which apps may keep your Mac awake from the menu bar icon → Choose Apps."}}},
      {"", {{Control::launchAtLogin, "Open at login", Toggle{launchAtLogin_.isOn}, "", ""}}},
  };
}

SettingsView::Section SettingsView::sleepSection() const {
  return {"Sleep",
          {{Control::grace, "Wait " + formatted(grace_) + " after work stops", graceSlider(), "",
            "A short pause between build steps won't drop the hold."},
           {Control::keepScreenOn, "Keep the screen on too", Toggle{keepScreenOn_}, "",
            "Off by default — the display sleeps on its own while work continues."},
           {Control::lidClosed, "Work with the lid closed", Toggle{lidClosed_.isOn},
            lidError_.value_or(""),
            "Needs your admin password once. Restored automatically if Staylit stops."}}};
}

SettingsView::Section SettingsView::batterySection() const {
  return {"Battery",
          {{Control::battery, "Stop holding below " + std::to_string(battery_) + "%",
            batterySlider(), "", ""},
           {Control::respectLowPower, "Respect Low Power Mode", Toggle{respectLowPower_}, "", ""},
           {Control::rightNow, "Right now", Value{rightNow()}, "", ""}}};
}

Slider SettingsView::graceSlider() const {
  return slider(grace_, 30, 600, 30);
}

Slider SettingsView::batterySlider() const {
  return slider(battery_, 0, 50, 5);
}

std::string SettingsView::rightNow() const {
  const tidewell::PowerState& power = engine_.powerState().get();
  if (!power.hasBattery) return "plugged in";
  return std::to_string(power.percentage) + "% · " + (power.onAC ? "plugged in" : "on battery");
}

std::string SettingsView::formatted(std::int64_t seconds) {
  if (seconds < 60) return std::to_string(seconds) + " seconds";
  return std::to_string(seconds / 60) + (seconds == 60 ? " minute" : " minutes");
}

void SettingsView::setValue(Control control, std::int64_t value) {
  if (control == Control::grace) moveSlider(graceSlider(), grace_, keys::graceSeconds, value);
  if (control == Control::battery) {
    moveSlider(batterySlider(), battery_, keys::batteryThreshold, value);
  }
}

void SettingsView::moveSlider(const Slider& slider, std::int64_t& stored, std::string_view key,
                              std::int64_t value) {
  // A knob that is put where it stands is no change, also where something else is stored.
  const std::int64_t inRange = std::clamp(value, slider.minimum, slider.maximum);
  const std::int64_t next = offered(slider, value);
  if (inRange == slider.value || next == slider.value) return;
  stored = next;
  defaults().setInteger(key, next);
  changes_.tell();
}

void SettingsView::setOn(Control control, bool on) {
  switch (control) {
    case Control::keepScreenOn:
      return flip(keepScreenOn_, keys::keepScreenOn, on);
    case Control::respectLowPower:
      return flip(respectLowPower_, keys::respectLowPower, on);
    case Control::honorAssertions:
      return flip(honorAssertions_, keys::honorAppAssertions, on);
    case Control::lidClosed:
      return flipGuarded(lidClosed_, &SettingsView::applyLidSetting, on);
    case Control::launchAtLogin:
      return flipGuarded(launchAtLogin_, &SettingsView::applyLaunchAtLogin, on);
    case Control::grace:
    case Control::battery:
    case Control::rightNow:
    case Control::watching:
      return;
  }
}

void SettingsView::flip(bool& stored, std::string_view key, bool on) {
  if (stored == on) return;
  stored = on;
  defaults().setBoolean(key, on);
  changes_.tell();
}

void SettingsView::flipGuarded(GuardedToggle& toggle, Apply apply, bool on) {
  if (toggle.isOn == on) return;
  toggle.isOn = on;
  ++toggle.changes;
  toggle.settle();
  changes_.tell();
  (this->*apply)(on);
}

void SettingsView::flipBack(GuardedToggle& toggle, Apply apply, bool on) {
  toggle.isOn = !on;
  ++toggle.changes;
  changes_.tell();
  // Later, as for every change, and unless the user has changed it again by then: that was acted
  // upon already.
  const auto again = [weak = std::weak_ptr(self_), &toggle, apply, change = toggle.changes] {
    const auto view = weak.lock();
    if (view && toggle.changes == change) ((*view)->*apply)(toggle.isOn);
  };
  if (++toggle.failures <= kPromptRepeats) return ports_.mainLoop->async(again);
  // Nobody is asked in between, or somebody declines for ever.
  toggle.repeat = ports_.mainLoop->scheduleRepeating(kLateRepeat, again);
}

void SettingsView::applyLidSetting(bool on) {
  const bool done =
      on ? tidewell::ClamshellController::enable() : tidewell::ClamshellController::disable();
  if (done) {
    defaults().setBoolean(keys::allowLidClosed, on);
    // Letting a lid switch go always succeeds, so that of a refused one nothing would be seen.
    const bool isOnlyUndone = lidClosed_.failures > 0 && ports_.lidSwitch;
    if (!isOnlyUndone) lidError_.reset();
    lidClosed_.settle();
    changes_.tell();
  } else {
    flipBack(lidClosed_, &SettingsView::applyLidSetting, on);
    lidError_ = "Administrator approval was declined.";
  }
}

void SettingsView::applyLaunchAtLogin(bool on) {
  const std::optional<std::string> error =
      on ? ports_.loginItem->registerItem() : ports_.loginItem->unregisterItem();
  if (!error) {
    defaults().setBoolean(keys::launchAtLogin, on);
    launchAtLogin_.settle();
  } else {
    flipBack(launchAtLogin_, &SettingsView::applyLaunchAtLogin, on);
    tidewell::Log::error("launch at login failed: " + *error);
  }
}

Subscription SettingsView::observe(std::function<void()> changed) {
  return changes_.observe(std::move(changed));
}

}  // namespace staylit
