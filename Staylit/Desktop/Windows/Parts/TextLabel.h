#pragma once

#include <QLabel>

#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {

enum class TextStyle { headline, body, callout, caption, smallCaption };

/// The font of a style of text, made from `base`, which is the desktop's own.
QFont styled(QFont base, TextStyle style);

enum class Ground { window, card };

/// A text in one of the styles and tones of the windows, which follows the desktop's font and
/// colours when they change.
class TextLabel : public QLabel {
 public:
  TextLabel(TextStyle style, Tone tone, Ground ground, QWidget* parent = nullptr);

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void followPalette();
  void followFont();

  TextStyle style_;
  Tone tone_;
  Ground ground_;
};

}  // namespace staylit::windows
