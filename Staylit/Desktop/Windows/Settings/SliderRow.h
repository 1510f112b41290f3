#pragma once

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"
#include "Staylit/Desktop/Windows/Settings/StepSlider.h"

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
  TextLabel* label_;
  StepSlider* slider_;
};

}  // namespace staylit::windows
