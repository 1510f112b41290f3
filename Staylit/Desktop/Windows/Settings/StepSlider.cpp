#include "Staylit/Desktop/Windows/Settings/StepSlider.h"

#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>

namespace staylit::windows {

StepSlider::StepSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  connect(this, &QSlider::valueChanged, this, [this](int value) { settle(value); });
}

void StepSlider::show(const SettingsView::Slider& slider) {
  const QSignalBlocker quiet(this);
  setRange(static_cast<int>(slider.minimum), static_cast<int>(slider.maximum));
  setSingleStep(static_cast<int>(slider.step));
  setPageStep(2 * singleStep());
  setValue(static_cast<int>(slider.value));
}

int StepSlider::onStep(int value) const {
  const int step = std::max(singleStep(), 1);
  const int nearest = minimum() + (value - minimum() + step / 2) / step * step;
  return std::min(nearest, maximum());
}

void StepSlider::settle(int value) {
  const int settled = onStep(value);
  // Setting the value calls this function again, with a value that stays.
  if (settled != value) return setValue(settled);
  if (onChange_) onChange_(value);
}

void StepSlider::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

}  // namespace staylit::windows
