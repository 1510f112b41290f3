#pragma once

#include <QSlider>
#include <functional>

#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// A slider that stands on whole steps only. The wheel scrolls the form rather than change a value
/// that happens to lie under the mouse.
class StepSlider : public QSlider {
 public:
  explicit StepSlider(QWidget* parent = nullptr);

  /// What the view says. Tells no one.
  void show(const SettingsView::Slider& slider);

  /// Told every new value that the user chooses, also while the handle is still held.
  void setOnChange(std::function<void(int value)> onChange) { onChange_ = std::move(onChange); }

 protected:
  void wheelEvent(QWheelEvent* event) override;

 private:
  [[nodiscard]] int onStep(int value) const;
  void settle(int value);

  std::function<void(int value)> onChange_;
};

}  // namespace staylit::windows
