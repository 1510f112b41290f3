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

/// A slider without its text.
Slider slider(std::int64_t stored, std::int64_t minimum, std::int64_t maximum, std::int64_t step) {
  return {std::clamp(stored, minimum, maximum), minimum, maximum, step, ""};
}

std::string percent(std::int64_t value) {
  return std::to_string(value) + "%";
}

/// The value nearest to `value` of all that the slider offers.
std::int64_t offered(const Slider& slider, std::int64_t value) {
  const std::int64_t above = std::clamp(value, slider.minimum, slider.maximum) - slider.minimum;
  return slider.minimum + (above + slider.step / 2) / slider.step * slider.step;
}

/// The stored value. Where a process holds the lid itself: whether it holds the lid now.
bool lidIsAllowed(const tidewell::Ports& ports) {
  const bool isStored = defaults().boolean(keys::allowLidClosed);
  return isStored && (!ports.lidSwitch || ports.lidSwitch->holds());
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
      lidClosed_(lidIsAllowed(ports), *ports.mainLoop, [this](bool on) { applyLidSetting(on); }),
      launchAtLogin_(defaults().boolean(keys::launchAtLogin), *ports.mainLoop,
                     [this](bool on) { applyLaunchAtLogin(on); }),
      changes_(engine, *ports.mainLoop) {
  followLid();
}

SettingsView::~SettingsView() = default;

std::vector<SettingsView::Section> SettingsView::form() const {
  std::vector<Section> form = sections();
  addSavingProblem(form);
  return form;
}

void SettingsView::addSavingProblem(std::vector<Section>& form) const {
  const std::string problem = lastChanged_ ? defaults().savingProblem() : "";
  if (problem.empty()) return;
  for (Section& section : form) {
    for (Row& row : section.rows) {
      if (row.control == lastChanged_ && row.error.empty()) {
        row.error = "Cannot be saved: " + problem + ". It counts until Staylit ends.";
      }
    }
  }
}

std::vector<SettingsView::Section> SettingsView::sections() const {
  return {
      sleepSection(),
      batterySection(),
      {"Detection",
       {{Control::honorAssertions, "Trust apps that ask to stay awake", Toggle{honorAssertions_},
         "", "Browsers raise this during downloads; editors during exports."}}},
      {"Apps",
       {{Control::watching, "Watching", Value{watching()}, "",
         "Choose which apps may keep your Mac awake from the menu bar icon → Choose Apps."}}},
      {"", {{Control::launchAtLogin, "Open at login", Toggle{launchAtLogin_.isOn()}, "", ""}}},
  };
}

SettingsView::Section SettingsView::sleepSection() const {
  return {"Sleep",
          {{Control::grace, "Wait " + formatted(grace_) + " after work stops", graceSlider(), "",
            "A short pause between build steps won't drop the hold."},
           {Control::keepScreenOn, "Keep the screen on too", Toggle{keepScreenOn_}, "",
            "Off by default — the display sleeps on its own while work continues."},
           {Control::lidClosed, "Work with the lid closed", Toggle{lidClosed_.isOn()}, lidError(),
            "Needs your admin password once. Restored automatically if Staylit stops."}}};
}

SettingsView::Section SettingsView::batterySection() const {
  return {"Battery",
          {{Control::battery, "Stop holding below " + percent(battery_), batterySlider(), "", ""},
           {Control::respectLowPower, "Respect Low Power Mode", Toggle{respectLowPower_}, "", ""},
           {Control::rightNow, "Right now", Value{rightNow()}, "", ""}}};
}

Slider SettingsView::graceSlider() const {
  Slider made = slider(grace_, kShortestGraceSeconds, kLongestGraceSeconds, 30);
  made.text = formatted(grace_);
  made.minimumText = formatted(made.minimum);
  made.maximumText = formatted(made.maximum);
  return made;
}

Slider SettingsView::batterySlider() const {
  Slider made = slider(battery_, 0, 50, 5);
  made.text = percent(battery_);
  made.minimumText = percent(made.minimum);
  made.maximumText = percent(made.maximum);
  return made;
}

std::string SettingsView::rightNow() const {
  const tidewell::PowerState& power = engine_.powerState().get();
  if (!power.hasBattery) return "plugged in";
  return percent(power.percentage) + " · " + (power.onAC ? "plugged in" : "on battery");
}

std::string SettingsView::formatted(std::int64_t seconds) {
  if (seconds < 60) return std::to_string(seconds) + " seconds";
  return std::to_string(seconds / 60) + (seconds == 60 ? " minute" : " minutes");
}

void SettingsView::setValue(Control control, std::int64_t value) {
  lastChanged_ = control;
  if (control == Control::grace) moveSlider(graceSlider(), grace_, keys::graceSeconds, value);
  if (control == Control::battery) {
    moveSlider(batterySlider(), battery_, keys::batteryThreshold, value);
  }
}

void SettingsView::moveSlider(const Slider& slider, std::int64_t& stored, std::string_view key,
                              std::int64_t value) {
  // A knob that is put where it stands changes nothing, even where another value is stored.
  const std::int64_t inRange = std::clamp(value, slider.minimum, slider.maximum);
  const std::int64_t next = offered(slider, value);
  if (inRange == slider.value || next == slider.value) return;
  stored = next;
  defaults().setInteger(key, next);
  changes_.viewChanged();
}

void SettingsView::setOn(Control control, bool on) {
  lastChanged_ = control;
  switch (control) {
    case Control::keepScreenOn:
      return flip(keepScreenOn_, keys::keepScreenOn, on);
    case Control::respectLowPower:
      return flip(respectLowPower_, keys::respectLowPower, on);
    case Control::honorAssertions:
      return flip(honorAssertions_, keys::honorAppAssertions, on);
    case Control::lidClosed:
      return flipGuarded(lidClosed_, on);
    case Control::launchAtLogin:
      return flipGuarded(launchAtLogin_, on);
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
  changes_.viewChanged();
}

void SettingsView::flipGuarded(GuardedToggle& toggle, bool on) {
  if (toggle.isOn() == on) return;
  toggle.change(on);
  changes_.viewChanged();
  toggle.act();
}

void SettingsView::flipBack(GuardedToggle& toggle, bool on, std::string_view key) {
  // The observers are told first, so that they show the change before the system is asked for it.
  changes_.viewChanged();
  toggle.failed(on, defaults().boolean(key));
}

void SettingsView::followLid() {
  if (!ports_.lidSwitch) return;
  lidChanges_ = ports_.lidSwitch->observe([this](bool) {
    lidClosed_.show(lidIsAllowed(ports_));
    changes_.viewChanged();
  });
}

/// An off that may become an on by itself must not look like an off that stays.
std::string SettingsView::lidError() const {
  if (lidError_) {
    const std::string reason = ports_.lidSwitch ? ports_.lidSwitch->lastFailure() : "";
    return *lidError_ + (reason.empty() ? "" : " In fact: " + reason + ".");
  }
  const bool isTriedAgain = ports_.lidSwitch && ports_.lidSwitch->isTriedAgain();
  return isTriedAgain ? "Not in effect now. Staylit goes on trying." : "";
}

void SettingsView::applyLidSetting(bool on) {
  if (!on) return lidApplied(on, tidewell::ClamshellController::disable());
  tidewell::ClamshellController::enable(
      [view = self_.make(), on, change = lidClosed_.changes()](bool isDone) {
        // A failed change flips nothing back when the user has changed the toggle again meanwhile.
        if (view && (isDone || view->lidClosed_.changes() == change)) view->lidApplied(on, isDone);
      });
}

void SettingsView::lidApplied(bool on, bool isDone) {
  if (isDone) {
    defaults().setBoolean(keys::allowLidClosed, on);
    // Letting the lid go always succeeds. If that cleared the error of a refused hold, nobody would
    // see the error.
    const bool isOnlyUndone = lidClosed_.hasFailed() && ports_.lidSwitch;
    if (!isOnlyUndone) lidError_.reset();
    lidClosed_.succeeded();
    lidClosed_.show(on);
    changes_.viewChanged();
  } else {
    flipBack(lidClosed_, on, keys::allowLidClosed);
    lidError_ = "Administrator approval was declined.";
  }
}

void SettingsView::applyLaunchAtLogin(bool on) {
  const std::optional<std::string> error =
      on ? ports_.loginItem->registerItem() : ports_.loginItem->unregisterItem();
  if (!error) {
    defaults().setBoolean(keys::launchAtLogin, on);
    launchAtLogin_.succeeded();
  } else {
    flipBack(launchAtLogin_, on, keys::launchAtLogin);
    tidewell::Log::error("launch at login failed: " + *error);
  }
}

Subscription SettingsView::observe(std::function<void()> changed) {
  return changes_.observe(std::move(changed));
}

}  // namespace staylit
