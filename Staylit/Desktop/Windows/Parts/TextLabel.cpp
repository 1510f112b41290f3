#include "Staylit/Desktop/Windows/Parts/TextLabel.h"

#include <QApplication>
#include <QEvent>

namespace staylit::windows {
namespace {

constexpr double kCallout = 0.94;
constexpr double kCaption = 0.86;
constexpr double kSmallCaption = 0.82;

QFont scaled(QFont font, double factor) {
  // A desktop gives its font either in points or in pixels.
  if (font.pointSizeF() > 0) {
    font.setPointSizeF(font.pointSizeF() * factor);
  } else {
    font.setPixelSize(qRound(font.pixelSize() * factor));
  }
  return font;
}

}  // namespace

QFont styled(QFont base, TextStyle style) {
  switch (style) {
    case TextStyle::headline:
      base.setWeight(QFont::DemiBold);
      return base;
    case TextStyle::body:
      return base;
    case TextStyle::callout:
      return scaled(base, kCallout);
    case TextStyle::caption:
      return scaled(base, kCaption);
    case TextStyle::smallCaption:
      return scaled(base, kSmallCaption);
  }
  return base;
}

TextLabel::TextLabel(TextStyle style, Tone tone, Ground ground, QWidget* parent)
    : QLabel(parent), style_(style), tone_(tone), ground_(ground) {
  // An application's name may look like markup, but it is none.
  setTextFormat(Qt::PlainText);
  followFont();
  followPalette();
}

bool TextLabel::event(QEvent* event) {
  // Qt does not pass this event to `changeEvent`.
  if (event->type() == QEvent::ApplicationFontChange) followFont();
  return QLabel::event(event);
}

void TextLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) followPalette();
}

void TextLabel::followPalette() {
  // The label's own palette holds the colours that were set here before.
  const QPalette desktop = QApplication::palette();
  const Surface surface =
      ground_ == Ground::card ? Surface::card(desktop) : Surface::window(desktop);
  const QColor color = textColor(tone_, surface);
  QPalette own = palette();
  // Setting the palette calls this function again.
  if (own.color(foregroundRole()) == color) return;
  own.setColor(foregroundRole(), color);
  setPalette(own);
}

void TextLabel::followFont() {
  setFont(styled(QApplication::font(this), style_));
}

}  // namespace staylit::windows
