#include "Staylit/Desktop/Windows/Settings/StepSlider.h"

#include <QFocusEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>

namespace staylit::windows {
namespace {

constexpr double kGroove = 4;
constexpr double kGrooveShare = 0.22;
constexpr double kHandle = 14;
constexpr double kHandleHoverShare = 0.12;
constexpr int kRoomForRing = 3;   ///< On every side of the handle.
constexpr double kToRing = 1.75;  ///< From the edge of the handle to the middle of the ring.

QColor accentOf(const QPalette& palette, const Surface& card) {
  return legible(palette.color(QPalette::Highlight), card.background, kSignContrast);
}

}  // namespace

StepSlider::StepSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setAttribute(Qt::WA_Hover);
  connect(this, &QSlider::valueChanged, this, [this](int value) { settle(value); });
}

QSize StepSlider::sizeHint() const {
  const int high = static_cast<int>(kHandle) + 2 * kRoomForRing;
  return QSlider::sizeHint().expandedTo(QSize(0, high));
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

void StepSlider::keyPressEvent(QKeyEvent* event) {
  byKeyboard_ = true;
  update();
  QSlider::keyPressEvent(event);
}

void StepSlider::mousePressEvent(QMouseEvent* event) {
  byKeyboard_ = false;
  QSlider::mousePressEvent(event);
}

void StepSlider::focusInEvent(QFocusEvent* event) {
  switch (event->reason()) {
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
      break;
    default:
      byKeyboard_ = event->reason() != Qt::MouseFocusReason;
  }
  QSlider::focusInEvent(event);
}

void StepSlider::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const Surface card = Surface::card(palette());
  paintGroove(painter, card);
  paintThumb(painter, card);
}

/// The centre of the handle: where the style has it, too, when it looks what the mouse has hit; at
/// the ends a little further in, so that the ring has room.
QPointF StepSlider::thumb() const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  const QRectF place =
      style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
  const double room = kHandle / 2 + kRoomForRing;
  return {std::clamp(place.center().x(), room, std::max(room, width() - room)), height() / 2.0};
}

void StepSlider::paintGroove(QPainter& painter, const Surface& card) const {
  const double top = (height() - kGroove) / 2;
  const double middle = thumb().x();
  const QRectF left(kRoomForRing, top, middle - kRoomForRing, kGroove);
  const QRectF right(middle, top, width() - kRoomForRing - middle, kGroove);
  const bool toTheLeft = layoutDirection() == Qt::RightToLeft;
  painter.setPen(Qt::NoPen);
  painter.setBrush(mixed(card.text, card.background, kGrooveShare));
  painter.drawRoundedRect(toTheLeft ? left : right, kGroove / 2, kGroove / 2);
  painter.setBrush(accentOf(palette(), card));
  painter.drawRoundedRect(toTheLeft ? right : left, kGroove / 2, kGroove / 2);
}

void StepSlider::paintThumb(QPainter& painter, const Surface& card) const {
  const QColor accent = accentOf(palette(), card);
  const bool reacts = underMouse() || isSliderDown();
  painter.setPen(Qt::NoPen);
  painter.setBrush(reacts ? mixed(card.text, accent, kHandleHoverShare) : accent);
  painter.drawEllipse(thumb(), kHandle / 2, kHandle / 2);
  if (!hasFocus() || !byKeyboard_) return;
  painter.setPen(QPen(accent, 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(thumb(), kHandle / 2 + kToRing, kHandle / 2 + kToRing);
}

}  // namespace staylit::windows
