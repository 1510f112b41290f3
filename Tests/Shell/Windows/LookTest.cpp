#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"
#include "Staylit/Desktop/Windows/FixedWindow.h"
#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/Desktop/Windows/Parts/Symbols.h"
#include "Staylit/Desktop/Windows/Parts/TextLabel.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit::windows {
namespace {

QPalette palette(const QColor& window, const QColor& base, const QColor& text) {
  QPalette made(window);
  made.setColor(QPalette::Base, base);
  made.setColor(QPalette::WindowText, text);
  made.setColor(QPalette::Text, text);
  return made;
}

/// Four palettes: light, dark, black on yellow, and one whose window and base have the same grey.
std::vector<QPalette> palettes() {
  return {palette(QColor(239, 239, 239), Qt::white, Qt::black),
          palette(QColor(50, 50, 53), QColor(36, 36, 38), Qt::white),
          palette(Qt::black, Qt::black, Qt::yellow),
          palette(QColor(128, 128, 128), QColor(128, 128, 128), Qt::black)};
}

TEST(Shades, MeasureContrastAsTheGuidelinesDo) {
  EXPECT_DOUBLE_EQ(contrast(Qt::black, Qt::white), 21);
  EXPECT_DOUBLE_EQ(contrast(Qt::white, Qt::black), 21);
  EXPECT_DOUBLE_EQ(contrast(Qt::red, Qt::red), 1);
  EXPECT_NEAR(contrast(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
}

TEST(Shades, MakeAllTextLegibleOnEverySurface) {
  for (const QPalette& each : palettes()) {
    for (const Surface& surface :
         {Surface::window(each), Surface::base(each), Surface::card(each)}) {
      for (const Tone tone : {Tone::secondary, Tone::tertiary, Tone::error})
        EXPECT_GE(contrast(textColor(tone, surface), surface.background), 4.5);
      EXPECT_GE(contrast(workingColor(surface), surface.background), 3);
      EXPECT_LT(contrast(quietSignColor(surface), surface.background),
                contrast(textColor(Tone::primary, surface), surface.background));
      EXPECT_GT(contrast(quietSignColor(surface), surface.background), 1.3);
    }
  }
}

TEST(Shades, MakeTheDotGreenInLightAndDark) {
  for (const QPalette& each : {palettes()[0], palettes()[1]}) {
    const QColor dot = workingColor(Surface::base(each));
    EXPECT_GT(dot.green(), dot.red());
    EXPECT_GT(dot.green(), dot.blue());
  }
}

TEST(Shades, LeaveAColourAloneThatIsLegible) {
  EXPECT_EQ(legible(QColor(200, 36, 30), Qt::white, 4.5), QColor(200, 36, 30));
}

/// A test that may change the desktop's palette, which is restored afterwards.
class TextLabelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WindowSystem::shared();
    former = QApplication::palette();
  }
  void TearDown() override { QApplication::setPalette(former); }

  QPalette former;
};

TEST_F(TextLabelTest, FollowsTheDesktopsColoursWhenTheyChange) {
  QWidget window;
  const TextLabel label(TextStyle::caption, Tone::secondary, Ground::card, &window);
  window.show();
  for (const QPalette& each : palettes()) {
    QApplication::setPalette(each);
    QApplication::processEvents();
    EXPECT_EQ(label.palette().color(label.foregroundRole()),
              textColor(Tone::secondary, Surface::card(each)));
  }
}

TEST_F(TextLabelTest, FollowsTheDesktopsFontWhenItChanges) {
  const QFont usual = QApplication::font();
  TextLabel label(TextStyle::caption, Tone::primary, Ground::window);
  label.show();
  const double before = label.font().pointSizeF();
  QFont larger = usual;
  larger.setPointSizeF(usual.pointSizeF() * 2);
  QApplication::setFont(larger);
  QApplication::processEvents();
  EXPECT_NEAR(label.font().pointSizeF(), 2 * before, 0.5);
  QApplication::setFont(usual);
}

TEST(FixedWindow, IsSmallerOnlyWhereItWouldNotFit) {
  EXPECT_EQ(fittingSize({460, 560}, {1366, 768}), QSize(460, 560));
  EXPECT_EQ(fittingSize({460, 560}, {683, 384}), QSize(460, 336)) << "1366 by 768 at 200 %";
  EXPECT_EQ(fittingSize({460, 560}, {300, 10}), QSize(300, 48));
}

TEST(Fonts, GrowAndShrinkWithTheDesktopsFont) {
  QFont points;
  points.setPointSizeF(20);
  EXPECT_LT(styled(points, TextStyle::callout).pointSizeF(), 20);
  EXPECT_LT(styled(points, TextStyle::caption).pointSizeF(), 19);
  EXPECT_GT(styled(points, TextStyle::smallCaption).pointSizeF(), 15);
  EXPECT_GT(styled(points, TextStyle::headline).weight(), points.weight());
  QFont pixels;
  pixels.setPixelSize(20);
  EXPECT_EQ(styled(pixels, TextStyle::caption).pixelSize(), 17);
}

class SymbolsTest : public WindowsTest {};

TEST_F(SymbolsTest, ExistUnderEveryNameThatTheWindowsUse) {
  WindowSystem::shared();
  AppsView view(*engine, fakes.ports);
  const AppsView::Header header = view.header();
  std::vector<std::string> names = {std::string(header.searchSymbol),
                                    std::string(header.clearSymbol)};
  for (const AppsView::Section& section : view.sections())
    names.insert(names.end(), {std::string(section.symbol), std::string(section.moveSymbol)});
  for (const tidewell::AppCategory category : tidewell::kAllAppCategories)
    names.emplace_back(symbol(category));
  for (const std::string& name : names) {
    EXPECT_FALSE(symbols::pixmap(qt(name), 16, Qt::red, 1).isNull()) << name;
  }
}

TEST_F(SymbolsTest, AreDrawnInTheWantedColourAtTheScreensOwnResolution) {
  WindowSystem::shared();
  const QPixmap picture = symbols::pixmap("moon.zzz", 16, QColor(200, 30, 40), 2);
  EXPECT_EQ(picture.size(), QSize(32, 32));
  EXPECT_EQ(picture.devicePixelRatio(), 2);
  const QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
  int covered = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor pixel = image.pixelColor(x, y);
      if (pixel.alpha() < 255) continue;
      ++covered;
      EXPECT_EQ(pixel, QColor(200, 30, 40));
    }
  }
  EXPECT_GT(covered, 20);
}

TEST_F(SymbolsTest, AreDrawnOnWholePixelsWhereAPointIsOneAndAHalf) {
  WindowSystem::shared();
  QImage paper(60, 60, QImage::Format_ARGB32_Premultiplied);
  paper.setDevicePixelRatio(1.5);
  paper.fill(Qt::transparent);
  QPainter painter(&paper);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  // The corner lies at 1.5 pixels.
  symbols::draw(painter, "moon.zzz", QRectF(1, 1, 16, 16), Qt::black);
  painter.end();
  paper.setDevicePixelRatio(1);
  QImage picture = symbols::pixmap("moon.zzz", 16, Qt::black, 1.5).toImage();
  picture.setDevicePixelRatio(1);
  EXPECT_EQ(paper.copy(2, 2, 24, 24), picture.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

TEST_F(SymbolsTest, DrawNothingForANameThatDoesNotExist) {
  WindowSystem::shared();
  EXPECT_TRUE(symbols::pixmap("no.such.symbol", 16, Qt::red, 1).isNull());
}

}  // namespace
}  // namespace staylit::windows
