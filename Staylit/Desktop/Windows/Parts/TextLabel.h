#pragma once

#include <QLabel>

#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/Desktop/Windows/Parts/Spoken.h"

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

/// The title of a window or of a group, which screen readers know as a heading.
class Heading : public TextLabel, public Spoken {
 public:
  explicit Heading(QWidget* parent)
      : TextLabel(TextStyle::headline, Tone::primary, Ground::window, parent) {}

  [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Heading; }
  [[nodiscard]] QString spokenName() const override { return text(); }
};

}  // namespace staylit::windows
