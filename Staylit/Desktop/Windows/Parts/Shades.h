#pragma once

#include <QColor>
#include <QPalette>

namespace staylit::windows {

/// A ground for text and symbols, in the colours of the desktop's own palette.
struct Surface {
  QColor background;
  QColor text;

  /// The window itself.
  static Surface window(const QPalette& palette);
  /// Lists and fields.
  static Surface base(const QPalette& palette);
  /// A group of settings, which stands out from the window.
  static Surface card(const QPalette& palette);

  [[nodiscard]] bool isDark() const;
};

enum class Tone { primary, secondary, tertiary, error };

/// The least contrast (WCAG) that makes text, or a sign, legible.
inline constexpr double kTextContrast = 4.5;
inline constexpr double kSignContrast = 3.0;

/// The ratio of the luminances of two opaque colours, 1 to 21.
double contrast(const QColor& one, const QColor& other);

/// `share` of `top`, the rest of `bottom`.
QColor mixed(const QColor& top, const QColor& bottom, double share);

/// `wanted`, or else the nearest colour on the way to black or white that has this contrast.
QColor legible(const QColor& wanted, const QColor& background, double ratio);

QColor textColor(Tone tone, const Surface& surface);
/// The colour of an ornament that is also there, in full, wherever the mouse or the keyboard is.
QColor quietSignColor(const Surface& surface);
/// The colour of the dot that marks an application that works.
QColor workingColor(const Surface& surface);
/// The colour of a hairline between two parts.
QColor lineColor(const Surface& surface);

}  // namespace staylit::windows
