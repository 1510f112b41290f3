#pragma once

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"

namespace staylit::windows {

/// A label and a value that cannot be changed here.
class ValueRow : public SettingsRow {
 public:
  ValueRow(const SettingsView::Row& row, QWidget* parent);

 protected:
  void showContent(const SettingsView::Row& row) override;
  QWidget* focus() override { return this; }

 private:
  TextLabel* label_;
  TextLabel* value_;
};

}  // namespace staylit::windows
