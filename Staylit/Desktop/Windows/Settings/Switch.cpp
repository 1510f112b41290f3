#include "Staylit/Desktop/Windows/Settings/Switch.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace staylit::windows {
namespace {

constexpr QSizeF kTrack(36, 20);
constexpr double kThumb = 14;
constexpr double kOffShare = 0.22;
constexpr double kSwitchHoverShare = 0.12;
constexpr double kOffHoverShare = 0.32;
constexpr double kOffContrast = 1.5;  ///< The outline of the track says where the switch is.
constexpr double kOutlineShare = 0.5;
constexpr int kMilliseconds = 120;

}  // namespace

Switch::Switch(QWidget* parent) : QCheckBox(parent) {
  setAttribute(Qt::WA_Hover);
  sliding_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&sliding_, &QVariantAnimation::valueChanged, this, [this] { update(); });
  connect(this, &QCheckBox::toggled, this, [this](bool on) { slide(on); });
}

QSize Switch::sizeHint() const {
  return kTrack.toSize() + QSize(2 * kRing, 2 * kRing);
}

bool Switch::hitButton(const QPoint& position) const {
  return rect().contains(position);
}

void Switch::slide(bool on) {
  sliding_.stop();
  // The user may have asked the desktop for no animations.
  const bool animated = isVisible() && style()->styleHint(QStyle::SH_Widget_Animate, nullptr, this);
  if (!animated) return update();
  sliding_.setStartValue(on ? 0.0 : 1.0);
  sliding_.setEndValue(on ? 1.0 : 0.0);
  sliding_.setDuration(kMilliseconds);
  sliding_.start();
}

double Switch::position() const {
  const bool moving = sliding_.state() == QAbstractAnimation::Running;
  const double position = moving ? sliding_.currentValue().toDouble() : (isChecked() ? 1.0 : 0.0);
  return layoutDirection() == Qt::RightToLeft ? 1 - position : position;
}

QRectF Switch::track() const {
  QRectF track(QPointF(), kTrack);
  track.moveCenter(QRectF(rect()).center());
  return track;
}

void Switch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.5);
  paintTrack(painter, track());
  paintThumb(painter, track());
  if (hasFocus() && byKeyboard_) paintRing(painter, track());
}

void Switch::paintTrack(QPainter& painter, const QRectF& track) const {
  const Surface card = Surface::card(palette());
  if (isChecked()) {
    const QColor accent =
        legible(palette().color(QPalette::Highlight), card.background, kSignContrast);
    painter.setPen(Qt::NoPen);
    painter.setBrush(underMouse() ? mixed(card.text, accent, kSwitchHoverShare) : accent);
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    return;
  }
  const QColor outline = mixed(card.text, card.background, kOutlineShare);
  painter.setPen(QPen(legible(outline, card.background, kSignContrast), 1));
  painter.setBrush(mixed(card.text, card.background, underMouse() ? kOffHoverShare : kOffShare));
  const QRectF inside = track.adjusted(0.5, 0.5, -0.5, -0.5);
  painter.drawRoundedRect(inside, inside.height() / 2, inside.height() / 2);
}

void Switch::paintThumb(QPainter& painter, const QRectF& track) const {
  const Surface card = Surface::card(palette());
  const double travel = track.width() - track.height();
  const QPointF center(track.left() + track.height() / 2 + travel * position(), track.center().y());
  painter.setPen(Qt::NoPen);
  painter.setBrush(isChecked() ? onThumb(card) : offThumb(card));
  painter.drawEllipse(center, kThumb / 2, kThumb / 2);
}

QColor Switch::onThumb(const Surface& card) const {
  const QColor accent =
      legible(palette().color(QPalette::Highlight), card.background, kSignContrast);
  return legible(palette().color(QPalette::HighlightedText), accent, kSignContrast);
}

/// As solid as the thumb of a switch that is on: a small grey one would look disabled.
QColor Switch::offThumb(const Surface& card) {
  const QColor track = mixed(card.text, card.background, kOffHoverShare);
  return legible(card.isDark() ? card.text : card.background, track, kOffContrast);
}

void Switch::paintRing(QPainter& painter, const QRectF& track) const {
  const Surface card = Surface::card(palette());
  const QColor accent = palette().color(QPalette::Highlight);
  painter.setPen(QPen(legible(accent, card.background, kSignContrast), 2));
  painter.setBrush(Qt::NoBrush);
  const QRectF ring = track.adjusted(-2, -2, 2, 2);
  painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
}

void Switch::keyPressEvent(QKeyEvent* event) {
  byKeyboard_ = true;
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!isReturn) return QCheckBox::keyPressEvent(event);
  if (!event->isAutoRepeat()) click();
}

void Switch::focusInEvent(QFocusEvent* event) {
  byKeyboard_ = event->reason() != Qt::MouseFocusReason;
  QCheckBox::focusInEvent(event);
}

}  // namespace staylit::windows
