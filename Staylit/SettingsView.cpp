#include "Staylit/SettingsView.h"

#include <algorithm>
#include <utility>

#include "Staylit/Prefs.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"
#include "Tidewell/Words.h"

namespace staylit {

using tidewell::Words;

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
  // TRANSLATORS: a charge of the battery.
  return Words::shown().phrase("{percent}%", {{"percent", std::to_string(value)}});
}

std::string graceLabel(std::int64_t seconds) {
  const Words& words = Words::shown();
  if (seconds < 60) {
    return words.phraseFor(seconds,
                           // TRANSLATORS: the label of a slider, from 30 seconds to 10 minutes.
                           "Wait {count} seconds after work stops",
                           "Wait {count} seconds after work stops");
  }
  if (seconds == 60) return words.phrase("Wait 1 minute after work stops");
  return words.phraseFor(seconds / 60, "Wait {count} minutes after work stops",
                         "Wait {count} minutes after work stops");
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
  // TRANSLATORS: stands after the label "Watching", and speaks of applications.
  if (ignored == 0) return Words::shown().phrase("everything");
  return Words::shown().phraseFor(static_cast<std::int64_t>(ignored),
                                  // TRANSLATORS: stands after the label "Watching": all
                                  // applications but so many.
                                  "all but {count}", "all but {count}");
}

std::string inSeconds(std::int64_t seconds) {
  // TRANSLATORS: what a slider stands at.
  return Words::shown().phraseFor(seconds, "{count} seconds", "{count} seconds");
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
        row.error = Words::shown().phrase(
            // TRANSLATORS: "it" is the change of a setting. The reason is in English.
            "Cannot be saved: {reason}. It counts until Staylit ends.", {{"reason", problem}});
      }
    }
  }
}

std::vector<SettingsView::Section> SettingsView::sections() const {
  const Words& words = Words::shown();
  return {
      sleepSection(),
      batterySection(),
      // TRANSLATORS: the title of a group of settings: how work is found.
      {words.phrase("Detection"),
       {{Control::honorAssertions, words.phrase("Trust apps that ask to stay awake"),
         Toggle{honorAssertions_}, "",
         // TRANSLATORS: "this" is the request to stay awake.
         words.phrase("Browsers raise this during downloads; editors during exports.")}}},
      // TRANSLATORS: the title of a group of settings.
      {words.phrase("Apps"),
       {// TRANSLATORS: a label; after it stands "everything" or "all but 3".
        {Control::watching, words.phrase("Watching"), Value{watching()}, "",
         words.phrase(
             "Choose which apps may keep your Mac awake from the menu bar icon → Choose Apps.")}}},
      {"",
       {{Control::launchAtLogin, words.phrase("Open at login"), Toggle{launchAtLogin_.isOn()}, "",
         ""}}},
  };
}

SettingsView::Section SettingsView::sleepSection() const {
  const Words& words = Words::shown();
  return {
      // TRANSLATORS: the title of a group of settings: the sleep of the computer.
      words.phrase("Sleep"),
      {{Control::grace, graceLabel(grace_), graceSlider(), "",
        // TRANSLATORS: a build is the making of a program; the hold keeps the computer awake.
        words.phrase("A short pause between build steps won't drop the hold.")},
       {Control::keepScreenOn, words.phrase("Keep the screen on too"), Toggle{keepScreenOn_}, "",
        // TRANSLATORS: the screen sleeps, not the computer.
        words.phrase("Off by default — the display sleeps on its own while work continues.")},
       {Control::lidClosed, words.phrase("Work with the lid closed"), Toggle{lidClosed_.isOn()},
        lidError(),
        words.phrase(
            // TRANSLATORS: below "Work with the lid closed".
            "Needs your admin password once. Restored automatically if Staylit stops.")}}};
}

SettingsView::Section SettingsView::batterySection() const {
  const Words& words = Words::shown();
  const std::string label = words.phrase(
      // TRANSLATORS: the label of a slider: a charge of the battery below which the computer may
      // sleep.
      "Stop holding below {percent}%", {{"percent", std::to_string(battery_)}});
  return {words.phrase("Battery"),
          {{Control::battery, label, batterySlider(), "", ""},
           {Control::respectLowPower, words.phrase("Respect Low Power Mode"),
            Toggle{respectLowPower_}, "", ""},
           // TRANSLATORS: a label; after it stands "64% · on battery" or "plugged in".
           {Control::rightNow, words.phrase("Right now"), Value{rightNow()}, "", ""}}};
}

Slider SettingsView::graceSlider() const {
  Slider made = slider(grace_, kShortestGraceSeconds, kLongestGraceSeconds, 30);
  // The label leaves half a minute out. Who hears each step must hear that it is another.
  made.text = grace_ % 60 == 0 ? formatted(grace_) : inSeconds(grace_);
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
  const Words& words = Words::shown();
  // TRANSLATORS: stands after the label "Right now": the computer gets power from a socket.
  if (!power.hasBattery) return words.phrase("plugged in");
  const std::string charge = std::to_string(power.percentage);
  return power.onAC ? words.phrase("{percent}% · plugged in", {{"percent", charge}})
                    : words.phrase("{percent}% · on battery", {{"percent", charge}});
}

std::string SettingsView::formatted(std::int64_t seconds) {
  const Words& words = Words::shown();
  if (seconds < 60) return inSeconds(seconds);
  if (seconds == 60) return words.phrase("1 minute");
  return words.phraseFor(seconds / 60, "{count} minutes", "{count} minutes");
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
    if (reason.empty()) return *lidError_;
    return Words::shown().phrase(
        // TRANSLATORS: {error} is "Administrator approval was declined." The reason is in English.
        "{error} In fact: {reason}.", {{"error", *lidError_}, {"reason", reason}});
  }
  const bool isTriedAgain = ports_.lidSwitch && ports_.lidSwitch->isTriedAgain();
  // TRANSLATORS: below the switch "Work with the lid closed".
  return isTriedAgain ? Words::shown().phrase("Not in effect now. Staylit goes on trying.") : "";
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
    // TRANSLATORS: below a switch that went back by itself.
    lidError_ = Words::shown().phrase("Administrator approval was declined.");
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
