#pragma once

#include <QSlider>
#include <functional>

#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// A slider that stops only at whole steps, drawn in the same way as a switch. The wheel scrolls
/// the form and does not change a slider that happens to lie under the mouse.
class StepSlider : public QSlider {
 public:
  explicit StepSlider(QWidget* parent = nullptr);

  /// Shows `slider` without calling `onChange`.
  void show(const SettingsView::Slider& slider);

  /// `onChange` is called with every new value, even while the user still holds the handle.
  void setOnChange(std::function<void(int value)> onChange) { onChange_ = std::move(onChange); }

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  [[nodiscard]] int onStep(int value) const;
  void settle(int value);
  [[nodiscard]] QPointF thumb() const;
  void paintGroove(QPainter& painter, const Surface& card) const;
  void paintThumb(QPainter& painter, const Surface& card) const;

  std::function<void(int value)> onChange_;
  bool byKeyboard_ = false;
};

}  // namespace staylit::windows
