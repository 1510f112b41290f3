#include "Staylit/Desktop/Windows/Parts/Divider.h"

#include <QPainter>

#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {

Divider::Divider(QWidget* parent) : QWidget(parent) {
  setFixedHeight(1);
}

void Divider::paintEvent(QPaintEvent*) {
  QPainter(this).fillRect(rect(), lineColor(Surface::window(palette())));
}

}  // namespace staylit::windows
