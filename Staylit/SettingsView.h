#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Staylit/GuardedToggle.h"
#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/ViewChanges.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// What the Settings window shows and does: a form of five sections.
///
/// The view reads the values from the store once, when it is made, and stores every change at once.
/// The functions that a window system needs are virtual, because on Linux the windows lie in a
/// module that links nothing of the program. Main thread only; the arguments must outlive the view,
/// and the ports must be the installed ones.
///
/// Working with the lid closed and opening at login are `GuardedToggle`s: the system does what they
/// ask for before the new value is stored, and that may last until the user has answered the
/// system. Where a process holds the lid itself, the lid's toggle shows whether it holds it now,
/// and follows when the hold ends or begins by itself. While the toggle is off and the hold is
/// tried again, a line under the toggle says so.
///
/// While a change cannot be written, a line under the control that was changed last says why.
class SettingsView {
 public:
  /// Names a control when a window tells the view of a change.
  enum class Control {
    grace,
    keepScreenOn,
    lidClosed,
    battery,
    respectLowPower,
    rightNow,
    honorAssertions,
    watching,
    launchAtLogin,
  };

  struct Slider {
    /// Where the knob stands: at the stored value, or at the nearest end of the range. The stored
    /// value may lie between two steps.
    std::int64_t value = 0;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    std::int64_t step = 1;
    std::string text;           ///< The stored value in words: "2 minutes", "20%".
    std::string minimumText{};  ///< The ends in words.
    std::string maximumText{};
    friend bool operator==(const Slider&, const Slider&) = default;
  };
  struct Toggle {
    bool isOn = false;
    friend bool operator==(const Toggle&, const Toggle&) = default;
  };
  /// A label with a value that cannot be changed.
  struct Value {
    std::string text;
    friend bool operator==(const Value&, const Value&) = default;
  };

  struct Row {
    Control control;
    std::string label;
    std::variant<Slider, Toggle, Value> content;
    std::string error;    ///< Shown in red under the control; empty for none.
    std::string caption;  ///< Shown under control and error; empty for none.
    friend bool operator==(const Row&, const Row&) = default;
  };

  struct Section {
    std::string title;  ///< Empty for none.
    std::vector<Row> rows;
    friend bool operator==(const Section&, const Section&) = default;
  };

  SettingsView(StaylitEngine& engine, tidewell::Ports& ports);
  virtual ~SettingsView();
  SettingsView(const SettingsView&) = delete;
  SettingsView& operator=(const SettingsView&) = delete;

  /// The form as it is to be shown now.
  [[nodiscard]] virtual std::vector<Section> form() const;

  /// The user moved a slider or flipped a toggle. Has no effect on a control of another kind, or
  /// when the control shows that value already. A value that the slider does not offer becomes the
  /// nearest value that it offers.
  virtual void setValue(Control control, std::int64_t value);
  virtual void setOn(Control control, bool on);

  /// As `AppsView::observe`.
  [[nodiscard]] virtual Subscription observe(std::function<void()> changed);

  /// A grace period in words: "45 seconds", "1 minute", "2 minutes".
  static std::string formatted(std::int64_t seconds);

 private:
  [[nodiscard]] std::vector<Section> sections() const;
  void addSavingProblem(std::vector<Section>& form) const;
  [[nodiscard]] Section sleepSection() const;
  [[nodiscard]] Section batterySection() const;
  [[nodiscard]] Slider graceSlider() const;
  [[nodiscard]] Slider batterySlider() const;
  [[nodiscard]] std::string rightNow() const;

  void moveSlider(const Slider& slider, std::int64_t& stored, std::string_view key,
                  std::int64_t value);
  void flip(bool& stored, std::string_view key, bool on);
  void flipGuarded(GuardedToggle& toggle, bool on);
  /// Undoes the change to `on`, which failed: the value under `key` is still the old one.
  void flipBack(GuardedToggle& toggle, bool on, std::string_view key);

  void applyLidSetting(bool on);
  void lidApplied(bool on, bool isDone);
  void followLid();
  [[nodiscard]] std::string lidError() const;
  void applyLaunchAtLogin(bool on);

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  std::int64_t grace_;
  std::int64_t battery_;
  bool respectLowPower_;
  bool keepScreenOn_;
  bool honorAssertions_;
  GuardedToggle lidClosed_;
  GuardedToggle launchAtLogin_;
  std::optional<std::string> lidError_;
  std::optional<Control> lastChanged_;  ///< By the user; under it a problem of saving is shown.
  ViewChanges changes_;
  std::shared_ptr<void> lidChanges_;
  tidewell::WeakReferenceSource<SettingsView> self_{*this};  ///< For answers that may come late.
};

}  // namespace staylit
