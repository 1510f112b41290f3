#include "Staylit/Desktop/Windows/Parts/Fonts.h"

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

}  // namespace staylit::windows
