#pragma once

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"
#include "Staylit/Desktop/Windows/Settings/StepSlider.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"

namespace staylit::windows {

/// A label that says the value in words, and a slider under it.
class SliderRow : public SettingsRow {
 public:
  using SetValue = std::function<void(SettingsView::Control control, int value)>;

  SliderRow(const SettingsView::Row& row, SetValue setValue, QWidget* parent);

 protected:
  void showContent(const SettingsView::Row& row) override;
  QWidget* focus() override { return slider_; }

 private:
  StepSlider* slider_;
  QString words_;  ///< The value.
};

/// A label and a switch; a click on either flips it.
class ToggleRow : public SettingsRow {
 public:
  using SetOn = std::function<void(SettingsView::Control control, bool on)>;

  ToggleRow(const SettingsView::Row& row, SetOn setOn, QWidget* parent);

 protected:
  void showContent(const SettingsView::Row& row) override;
  QWidget* focus() override { return switch_; }
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  void reachIntoMargins(bool hasNotes);

  Switch* switch_;
};

/// A label and a value that cannot be changed here.
class ValueRow : public SettingsRow {
 public:
  ValueRow(const SettingsView::Row& row, QWidget* parent);

  /// Also of the caption: nothing here gets the keyboard, so no description would be read.
  [[nodiscard]] bool speaksOf(const QWidget& child) const override;

 protected:
  void showContent(const SettingsView::Row& row) override;
  QWidget* focus() override { return value_; }
  [[nodiscard]] QString focusName(const SettingsView::Row& row) const override;
  [[nodiscard]] QString focusDescription(const SettingsView::Row& row) const override;

 private:
  TextLabel* value_;
};

}  // namespace staylit::windows
