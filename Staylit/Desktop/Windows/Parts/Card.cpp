#include "Staylit/Desktop/Windows/Parts/Card.h"

#include <QPainter>

#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {
namespace {

constexpr double kRadius = 8;
constexpr int kLineInset = 12;

}  // namespace

Card::Card(QWidget* parent) : QWidget(parent), column_(new QVBoxLayout(this)) {
  column_->setContentsMargins(0, 0, 0, 0);
  // The hairline lies between two rows.
  column_->setSpacing(1);
}

void Card::add(QWidget* row) {
  column_->addWidget(row);
}

QAccessible::Role Card::spokenRole() const {
  return accessibleName().isEmpty() ? QAccessible::Client : QAccessible::Grouping;
}

void Card::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const Surface card = Surface::card(palette());
  painter.setBrush(card.background);
  painter.setPen(lineColor(Surface::window(palette())));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
  for (int row = 0; row + 1 < column_->count(); ++row) {
    const int y = column_->itemAt(row)->geometry().bottom() + 1;
    painter.fillRect(QRect(kLineInset, y, width() - 2 * kLineInset, 1), lineColor(card));
  }
}

}  // namespace staylit::windows
