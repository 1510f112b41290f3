#include "Staylit/Desktop/Windows/Parts/SymbolButton.h"

#include <QPainter>
#include <utility>

#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/Desktop/Windows/Parts/Symbols.h"

namespace staylit::windows {
namespace {

constexpr int kButtonSide = 16;

}  // namespace

SymbolButton::SymbolButton(QString symbol, const QString& accessibleName, QWidget* parent)
    : QToolButton(parent), symbol_(std::move(symbol)) {
  setAccessibleName(accessibleName);
  setFocusPolicy(Qt::NoFocus);
  setCursor(Qt::ArrowCursor);
  setAttribute(Qt::WA_Hover);
}

QSize SymbolButton::sizeHint() const {
  return {kButtonSide, kButtonSide};
}

void SymbolButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const Tone tone = underMouse() || isDown() ? Tone::primary : Tone::secondary;
  symbols::draw(painter, symbol_, rect(), textColor(tone, Surface::base(palette())));
}

}  // namespace staylit::windows
