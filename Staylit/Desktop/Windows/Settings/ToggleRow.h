#pragma once

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"

namespace staylit::windows {

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

  TextLabel* label_;
  Switch* switch_;
};

}  // namespace staylit::windows
