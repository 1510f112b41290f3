#pragma once

#include <QSlider>
#include <functional>

#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// A slider that stops only at whole steps. The wheel scrolls the form and does not change a slider
/// that happens to lie under the mouse.
class StepSlider : public QSlider {
 public:
  explicit StepSlider(QWidget* parent = nullptr);

  /// Shows `slider` without calling `onChange`.
  void show(const SettingsView::Slider& slider);

  /// `onChange` is called with every new value, even while the user still holds the handle.
  void setOnChange(std::function<void(int value)> onChange) { onChange_ = std::move(onChange); }

 protected:
  void wheelEvent(QWheelEvent* event) override;

 private:
  [[nodiscard]] int onStep(int value) const;
  void settle(int value);

  std::function<void(int value)> onChange_;
};

}  // namespace staylit::windows
