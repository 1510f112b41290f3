#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Staylit/Desktop/StatusItem/StatusIcons.h"
#include "Staylit/Desktop/StatusItem/StatusPixmaps.h"
#include "Tidewell/AppCategory.h"

namespace staylit {
namespace {

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::stringstream text;
  text << stream.rdbuf();
  return text.str();
}

TEST(Symbols, EachHaveADrawing) {
  std::set<std::string> names = {
      "cup.and.saucer.fill", "cup.and.saucer", "pause.circle",      "magnifyingglass",
      "xmark.circle.fill",   "moon.zzz",       "arrow.down.circle", "arrow.up.circle",
      "arrow.down",          "arrow.up"};
  for (const tidewell::AppCategory category : tidewell::kAllAppCategories) {
    names.emplace(tidewell::symbol(category));
  }
  for (const std::string& name : names) {
    const std::string drawing = contents(std::filesystem::path(STAYLIT_SYMBOLS) / (name + ".svg"));
    EXPECT_NE(drawing.find("viewBox=\"0 0 16 16\""), std::string::npos) << name;
    // Panels give shapes of this class their own colour.
    EXPECT_NE(drawing.find("class=\"ColorScheme-Text\""), std::string::npos) << name;
    EXPECT_NE(drawing.find("currentColor"), std::string::npos) << name;
  }
}

TEST(Symbols, HaveFullAndDimmedIconsForTheStatusItemInEachSize) {
  const std::vector<std::pair<std::string, std::string>> sizes = {
      {"scalable", "0 0 16 16"}, {"22x22", "0 0 22 22"}, {"24x24", "0 0 24 24"}};
  for (const auto& [folder, viewBox] : sizes) {
    for (const char* symbol : {"cup.and.saucer.fill", "cup.and.saucer", "pause.circle"}) {
      for (const bool isDimmed : {false, true}) {
        const auto file = std::filesystem::path(STAYLIT_ICONS) / "hicolor" / folder / "status" /
                          (iconName(symbol, isDimmed) + ".svg");
        const std::string drawing = contents(file);
        EXPECT_NE(drawing.find("viewBox=\"" + viewBox + "\""), std::string::npos) << file;
        EXPECT_NE(drawing.find("</svg>"), std::string::npos) << file;
        EXPECT_EQ(drawing.find("opacity=\".7\"") != std::string::npos, isDimmed) << file;
        // Some panels fill all shapes, even lines.
        EXPECT_EQ(drawing.find("stroke"), std::string::npos) << file;
      }
    }
  }
}

/// How many pixels are neither empty nor full, as they are where an edge lies between pixels.
std::size_t blurredPixels(const StatusPixmap& pixmap) {
  return static_cast<std::size_t>(std::ranges::count_if(
      pixmap.opacities, [](std::uint8_t opacity) { return opacity > 32 && opacity < 223; }));
}

TEST(Symbols, HaveCupsWithStraightEdgesOnWholePixels) {
  for (const StatusPixmap& pixmap : statusPixmaps()) {
    if (!pixmap.symbol.starts_with("cup")) continue;
    // Only the curves of cup, handle and saucer are blurred: a few pixels for each pixel of width.
    EXPECT_LT(blurredPixels(pixmap), static_cast<std::size_t>(pixmap.size) * 2)
        << pixmap.symbol << pixmap.size;
  }
}

TEST(Symbols, HavePixmapsThatAreNeitherEmptyNorFull) {
  EXPECT_EQ(statusPixmaps().size(), 15U);
  for (const StatusPixmap& pixmap : statusPixmaps()) {
    ASSERT_EQ(pixmap.opacities.size(), static_cast<std::size_t>(pixmap.size * pixmap.size));
    std::size_t covered = 0;
    for (const std::uint8_t opacity : pixmap.opacities)
      covered += opacity > 127 ? 1 : 0;
    EXPECT_GT(covered, pixmap.opacities.size() / 10) << pixmap.symbol << pixmap.size;
    EXPECT_LT(covered, pixmap.opacities.size() * 3 / 4) << pixmap.symbol << pixmap.size;
  }
}

TEST(Symbols, HavePixelsOfOneGrey) {
  EXPECT_EQ(statusPixel(255, false), 0xff8e8e8eU);
  EXPECT_EQ(statusPixel(255, true), 0xe0828282U);
  EXPECT_EQ(statusPixel(0, false), 0x008e8e8eU);
  EXPECT_EQ(statusPixel(0, true), 0x00828282U);
}

/// The luminance of a grey between 0 and 255, by the Web Content Accessibility Guidelines.
double luminance(double grey) {
  const double share = grey / 255;
  return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

/// The contrast of a covered pixel of the pixmaps with the panel behind it.
double contrast(bool isDimmed, double panel) {
  const std::uint32_t pixel = statusPixel(255, isDimmed);
  const double opacity = (pixel >> 24U) / 255.0;
  const double seen = luminance((pixel & 0xffU) * opacity + panel * (1 - opacity));
  const double behind = luminance(panel);
  return (std::max(seen, behind) + 0.05) / (std::min(seen, behind) + 0.05);
}

TEST(Symbols, StandOutFromLightAndDarkPanels) {
  for (const bool isDimmed : {false, true}) {
    for (const int panel : {0xff, 0x2b, 0x00})
      EXPECT_GE(contrast(isDimmed, panel), 3.0) << isDimmed << " on " << panel;
  }
}

TEST(DesktopFile, IsValid) {
  if (std::system("command -v desktop-file-validate >/dev/null") != 0) {
    GTEST_SKIP() << "desktop-file-validate is not installed";
  }
  EXPECT_EQ(std::system("desktop-file-validate " STAYLIT_DESKTOP_FILE), 0);
}

}  // namespace
}  // namespace staylit
