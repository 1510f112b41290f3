#include "Staylit/Desktop/Windows/Apps/AppsPainter.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QRect>
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Windows/Apps/AppsModel.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit::windows {
namespace {

constexpr int kWide = 460;
// From the window's edge to the symbol, to the texts, and from the move symbol to the other edge.
constexpr int kSymbolLeft = 16;
constexpr int kTextsLeft = 42;
constexpr int kMoveRight = 16;
constexpr int kMoveWide = 16;

/// Draws single lines. What a test compares are two pictures that differ in one property, so that
/// no font matters.
class AppsPainterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WindowSystem::shared();
    option.font = QApplication::font();
    option.palette = QPalette(QColor(239, 239, 239));
    option.palette.setColor(QPalette::Base, Qt::white);
    option.palette.setColor(QPalette::Text, Qt::black);
    option.palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
    option.direction = Qt::LeftToRight;
  }

  static AppsView::Entry entry(const std::string& name) {
    AppsView::Entry made;
    made.id = "app";
    made.name = name;
    made.symbol = "app.dashed";
    return made;
  }

  static AppsView::Section section(std::vector<AppsView::Entry> entries) {
    return {"Staying awake for", "These", "cup.and.saucer.fill", "Nothing",
            "arrow.down.circle", "Stop",  std::move(entries)};
  }

  /// Line `row` of the sections, as it is drawn.
  QImage drawn(const std::vector<AppsView::Section>& sections, int row,
               const AppsPainter::Feedback& feedback = {}) {
    model.show(sections);
    painter.setFeedback(feedback);
    const QModelIndex index = model.index(row);
    option.rect = QRect(0, 0, kWide, 100);
    const int high = painter.sizeHint(option, index).height();
    option.rect = QRect(0, 0, kWide, high);
    QImage image(kWide, high, QImage::Format_RGB32);
    image.fill(option.palette.color(QPalette::Base));
    QPainter canvas(&image);
    painter.paint(&canvas, option, index);
    return image;
  }
  QImage drawnEntry(const AppsView::Entry& one) { return drawn({section({one})}, 1); }
  QImage drawnHeading(std::size_t count) {
    std::vector<AppsView::Entry> entries;
    for (std::size_t number = 0; number < count; ++number) {
      entries.push_back(entry("Name " + std::to_string(number)));
      entries.back().id = std::to_string(number);
    }
    return drawn({section(std::move(entries))}, 0);
  }

  /// The smallest rectangle with all pixels that differ; absent when none do.
  static std::optional<QRect> difference(const QImage& one, const QImage& other) {
    QRect all;
    for (int y = 0; y < std::min(one.height(), other.height()); ++y) {
      for (int x = 0; x < one.width(); ++x) {
        if (one.pixel(x, y) != other.pixel(x, y)) all |= QRect(x, y, 1, 1);
      }
    }
    return all.isNull() ? std::nullopt : std::optional(all);
  }
  static int greenPixels(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const QColor color = image.pixelColor(x, y);
        count += color.green() > color.red() + 60 && color.green() > color.blue() + 30 ? 1 : 0;
      }
    }
    return count;
  }

  AppsModel model;
  AppsPainter painter{model, nullptr};
  QStyleOptionViewItem option;
};

TEST_F(AppsPainterTest, DrawsAGreenDotRightOfTheNameOfWhatWorks) {
  AppsView::Entry working = entry("make");
  working.isWorking = true;
  const QImage with = drawnEntry(working);
  const QImage without = drawnEntry(entry("make"));
  const auto dot = difference(with, without);
  ASSERT_TRUE(dot);
  EXPECT_GT(dot->left(), kTextsLeft);
  EXPECT_LE(dot->width(), 7);
  EXPECT_LE(dot->height(), 7);
  EXPECT_GE(greenPixels(with), 16);
  EXPECT_EQ(greenPixels(without), 0);
}

TEST_F(AppsPainterTest, DrawsTheNumberOfApplicationsInABadgeEvenForNone) {
  const QImage none = drawnHeading(0);
  const QImage one = drawnHeading(1);
  const QImage many = drawnHeading(39);
  const auto number = difference(none, one);
  ASSERT_TRUE(number);
  EXPECT_GT(number->left(), kTextsLeft);
  // Two digits need a wider badge.
  const auto badge = difference(none, many);
  ASSERT_TRUE(badge);
  EXPECT_GT(badge->width(), number->width());
  // Around the digit lies the capsule, which is neither the ground nor the text.
  const QColor capsule = none.pixelColor(number->left() - 2, number->center().y());
  EXPECT_NE(capsule, QColor(Qt::white));
  EXPECT_GT(capsule.lightness(), 180);
}

TEST_F(AppsPainterTest, DrawsTheSymbolOfTheCategoryOnTheLeft) {
  AppsView::Entry build = entry("make");
  build.symbol = "hammer";
  const auto symbol = difference(drawnEntry(build), drawnEntry(entry("make")));
  ASSERT_TRUE(symbol);
  EXPECT_GE(symbol->left(), kSymbolLeft);
  EXPECT_LT(symbol->right(), kTextsLeft);
}

TEST_F(AppsPainterTest, DrawsTheMoveSymbolOnTheRight) {
  AppsView::Section ignored = section({entry("make")});
  ignored.moveSymbol = "arrow.up.circle";
  const auto symbol = difference(drawn({ignored}, 1), drawnEntry(entry("make")));
  ASSERT_TRUE(symbol);
  EXPECT_GE(symbol->left(), kWide - kMoveRight - kMoveWide);
  EXPECT_LT(symbol->right(), kWide - kMoveRight);
}

TEST_F(AppsPainterTest, MirrorsALineWhereTheScriptRunsToTheLeft) {
  option.direction = Qt::RightToLeft;
  const QImage plain = drawnEntry(entry("make"));
  AppsView::Entry build = entry("make");
  build.symbol = "hammer";
  const auto symbol = difference(drawnEntry(build), plain);
  ASSERT_TRUE(symbol);
  EXPECT_GE(symbol->left(), kWide - kTextsLeft);
  AppsView::Section ignored = section({entry("make")});
  ignored.moveSymbol = "arrow.up.circle";
  const auto move = difference(drawn({ignored}, 1), plain);
  ASSERT_TRUE(move);
  EXPECT_LT(move->right(), kMoveRight + kMoveWide);
  AppsView::Entry working = entry("make");
  working.isWorking = true;
  const auto dot = difference(drawnEntry(working), plain);
  ASSERT_TRUE(dot);
  EXPECT_LT(dot->right(), kWide - kTextsLeft);
  EXPECT_GT(dot->left(), kWide / 2) << "beside the name, which begins on the right";
  const auto badge = difference(drawnHeading(0), drawnHeading(1));
  ASSERT_TRUE(badge);
  EXPECT_LT(badge->right(), kWide - kTextsLeft);
  EXPECT_GT(badge->left(), kWide / 4);
}

TEST_F(AppsPainterTest, TellsTheMoveSymbolFromTheSymbolOfDownloads) {
  AppsView::Entry download = entry("curl");
  download.symbol = "arrow.down.circle";
  const QImage image = drawnEntry(download);
  const int middle = image.height() / 2;
  const QImage category = image.copy(kSymbolLeft, middle - 8, 17, 17);
  const QImage move = image.copy(kWide - kMoveRight - kMoveWide, middle - 8, 16, 17);
  // Of the circle, which only the category has, the leftmost column is drawn at half height.
  const auto isMarked = [](const QImage& one, int column) {
    return one.pixelColor(column, one.height() / 2).lightness() < 230;
  };
  EXPECT_TRUE(isMarked(category, 1) || isMarked(category, 2));
  EXPECT_FALSE(isMarked(move, 0) || isMarked(move, 1) || isMarked(move, 2));
}

TEST_F(AppsPainterTest, LeavesOutTheMiddleOfALongName) {
  const std::string long1(90, 'm');
  const QImage image = drawnEntry(entry("begin " + long1 + "x" + long1 + " end"));
  const QImage sameEnds = drawnEntry(entry("begin " + long1 + "W" + long1 + " end"));
  EXPECT_FALSE(difference(image, sameEnds)) << "the middle is not to be seen";
  const auto end = difference(image, drawnEntry(entry("begin " + long1 + "x" + long1 + " END")));
  ASSERT_TRUE(end);
  EXPECT_GT(end->left(), kWide / 2);
  EXPECT_LT(end->right(), kWide - kMoveRight - kMoveWide);
  const auto begin = difference(image, drawnEntry(entry("BEGIN " + long1 + "x" + long1 + " end")));
  ASSERT_TRUE(begin);
  EXPECT_LT(begin->left(), kWide / 4);
}

TEST_F(AppsPainterTest, DrawsTheDetailBelowTheName) {
  AppsView::Entry busy = entry("make");
  busy.detail = "112% CPU";
  AppsView::Entry busier = entry("make");
  busier.detail = "998% CPU";
  const QImage image = drawnEntry(busy);
  EXPECT_GT(image.height(), drawnEntry(entry("make")).height());
  const auto figures = difference(image, drawnEntry(busier));
  ASSERT_TRUE(figures);
  EXPECT_GT(figures->top(), image.height() / 2 - 2);
  EXPECT_GE(figures->left(), kTextsLeft);
}

TEST_F(AppsPainterTest, DrawsARingAroundTheRowOfTheKeyboard) {
  const QImage plain = drawnEntry(entry("make"));
  const QImage ringed = drawn({section({entry("make")})}, 1, {{}, {}, model.index(1)});
  const auto ring = difference(ringed, plain);
  ASSERT_TRUE(ring);
  EXPECT_LE(ring->left(), 9);
  EXPECT_GE(ring->right(), kWide - 10);
  const QColor edge = ringed.pixelColor(kWide / 2, 1);
  EXPECT_GT(edge.blue(), edge.red() + 60) << edge.name().toStdString();
}

TEST_F(AppsPainterTest, DrawsAPlateBehindTheRowUnderTheMouseAndADarkerOneWhileItIsPressed) {
  const std::vector<AppsView::Section> sections = {section({entry("make")})};
  drawn(sections, 1);
  const QModelIndex row = model.index(1);
  const auto ground = [](const QImage& image) {
    return image.pixelColor(kWide / 2, image.height() / 2).lightness();
  };
  const int plain = ground(drawn(sections, 1));
  const int hovered = ground(drawn(sections, 1, {row, {}, {}}));
  const int pressed = ground(drawn(sections, 1, {row, row, {}}));
  EXPECT_LT(hovered, plain);
  EXPECT_LT(pressed, hovered);
}

TEST_F(AppsPainterTest, DrawsTheMoveSymbolInFullUnderTheMouse) {
  const std::vector<AppsView::Section> sections = {section({entry("make")})};
  drawn(sections, 1);
  const auto darkest = [](const QImage& image) {
    int least = 255;
    for (int x = kWide - kMoveRight - kMoveWide; x < kWide - kMoveRight; ++x) {
      for (int y = 0; y < image.height(); ++y)
        least = std::min(least, image.pixelColor(x, y).lightness());
    }
    return least;
  };
  EXPECT_GT(darkest(drawn(sections, 1)), 120);
  EXPECT_LT(darkest(drawn(sections, 1, {model.index(1), {}, {}})), 60);
}

TEST_F(AppsPainterTest, PutsTitlesNamesAndCaptionsOnOneEdge) {
  const auto firstInk = [](const QImage& image) {
    for (int x = kSymbolLeft + 18; x < image.width(); ++x) {
      for (int y = 0; y < image.height(); ++y) {
        if (image.pixelColor(x, y).lightness() < 140) return x;
      }
    }
    return -1;
  };
  AppsView::Entry busy = entry("HHH");
  busy.detail = "HHH";
  AppsView::Section lines = section({busy});
  lines.title = "HHH";
  lines.subtitle = "HHH";
  EXPECT_NEAR(firstInk(drawn({lines}, 0)), firstInk(drawn({lines}, 1)), 2);
}

TEST_F(AppsPainterTest, StaysLegibleInAPaletteOfHighContrast) {
  option.palette.setColor(QPalette::Base, Qt::black);
  option.palette.setColor(QPalette::Text, Qt::yellow);
  QColor brightest = Qt::black;
  const QImage image = drawnEntry(entry("make"));
  for (int x = kTextsLeft; x < kWide / 2; ++x) {
    for (int y = 0; y < image.height(); ++y) {
      const QColor color = image.pixelColor(x, y);
      if (color.lightness() > brightest.lightness()) brightest = color;
    }
  }
  EXPECT_GT(brightest.red(), 200);
  EXPECT_LT(brightest.blue(), 60);
}

}  // namespace
}  // namespace staylit::windows
