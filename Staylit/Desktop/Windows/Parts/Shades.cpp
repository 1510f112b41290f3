#include "Staylit/Desktop/Windows/Parts/Shades.h"

#include <algorithm>
#include <cmath>

namespace staylit::windows {
namespace {

constexpr double kSecondaryShare = 0.74;
constexpr double kTertiaryShare = 0.58;
constexpr double kQuietShare = 0.28;
constexpr double kLineShare = 0.14;
constexpr double kDarkCardShare = 0.06;
/// How many colours the search for a legible one tries.
constexpr int kSteps = 25;

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

float channel(float top, float bottom, double share) {
  return std::clamp(bottom + (top - bottom) * static_cast<float>(share), 0.0F, 1.0F);
}

}  // namespace

Surface Surface::window(const QPalette& palette) {
  return {palette.color(QPalette::Window), palette.color(QPalette::WindowText)};
}

Surface Surface::base(const QPalette& palette) {
  return {palette.color(QPalette::Base), palette.color(QPalette::Text)};
}

Surface Surface::card(const QPalette& palette) {
  // A dark base looks like a hollow in the window, but a group of settings should rise from the
  // window.
  const Surface around = window(palette);
  if (!around.isDark()) return base(palette);
  return {mixed(around.text, around.background, kDarkCardShare), around.text};
}

bool Surface::isDark() const {
  return luminance(background) < luminance(text);
}

double contrast(const QColor& one, const QColor& other) {
  const double first = luminance(one);
  const double second = luminance(other);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor mixed(const QColor& top, const QColor& bottom, double share) {
  return QColor::fromRgbF(channel(top.redF(), bottom.redF(), share),
                          channel(top.greenF(), bottom.greenF(), share),
                          channel(top.blueF(), bottom.blueF(), share));
}

QColor legible(const QColor& wanted, const QColor& background, double ratio) {
  const bool brighten = contrast(Qt::white, background) > contrast(Qt::black, background);
  const QColor end = brighten ? Qt::white : Qt::black;
  for (int step = 0; step < kSteps; ++step) {
    const QColor candidate = mixed(end, wanted, static_cast<double>(step) / kSteps);
    if (contrast(candidate, background) >= ratio) return candidate;
  }
  return end;
}

QColor textColor(Tone tone, const Surface& surface) {
  const QColor secondary = mixed(surface.text, surface.background, kSecondaryShare);
  const QColor tertiary = mixed(surface.text, surface.background, kTertiaryShare);
  switch (tone) {
    case Tone::primary:
      return surface.text;
    case Tone::secondary:
      return legible(secondary, surface.background, kTextContrast);
    case Tone::tertiary:
      return legible(tertiary, surface.background, kTextContrast);
    case Tone::error:
      break;
  }
  const QColor red = surface.isDark() ? QColor(255, 120, 112) : QColor(200, 36, 30);
  return legible(red, surface.background, kTextContrast);
}

QColor quietSignColor(const Surface& surface) {
  return mixed(surface.text, surface.background, kQuietShare);
}

QColor workingColor(const Surface& surface) {
  const QColor green = surface.isDark() ? QColor(64, 205, 100) : QColor(34, 160, 70);
  return legible(green, surface.background, kSignContrast);
}

QColor lineColor(const Surface& surface) {
  return mixed(surface.text, surface.background, kLineShare);
}

}  // namespace staylit::windows
