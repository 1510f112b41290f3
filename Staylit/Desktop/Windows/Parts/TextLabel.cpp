#include "Staylit/Desktop/Windows/Parts/TextLabel.h"

#include <QApplication>
#include <QEvent>

namespace staylit::windows {

TextLabel::TextLabel(TextStyle style, Tone tone, Ground ground, QWidget* parent)
    : QLabel(parent), style_(style), tone_(tone), ground_(ground) {
  // An application's name may look like markup, but it is none.
  setTextFormat(Qt::PlainText);
  followFont();
  followPalette();
}

bool TextLabel::event(QEvent* event) {
  // This event does not come as a change event.
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
