#include "Staylit/Desktop/Windows/Apps/AppsPainter.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/Desktop/Windows/Parts/Symbols.h"
#include "Staylit/Desktop/Windows/Parts/TextLabel.h"

namespace staylit::windows {
namespace {

// All in points.
constexpr int kRowPadding = 16;  ///< From the window's edge to what is drawn.
constexpr int kPlateInset = 8;   ///< From the window's edge to the plate behind a row.
constexpr int kPlateRadius = 6;
constexpr int kSymbolWidth = 17;
constexpr int kSymbolGap = 9;  ///< After it stand all titles, names and captions, on one edge.
constexpr int kBadgeGap = 7;
constexpr int kMoveSymbol = 16;
constexpr int kDot = 6;
constexpr int kDotGap = 6;
constexpr int kEntryMargin = 6;  ///< Above and below a row's texts.
constexpr int kDetailGap = 1;
constexpr int kFirstHeadingTop = 12;
constexpr int kHeadingTop = 22;
constexpr int kHeadingBottom = 6;
constexpr int kSubtitleGap = 3;
constexpr int kBadgePadding = 6;
constexpr int kBadgeMargin = 1;
constexpr int kEmptyMargin = 8;
constexpr int kEndMargin = 8;  ///< Below the last line.
constexpr double kBadgeShare = 0.14;
constexpr double kHoverShare = 0.07;
constexpr double kPressedShare = 0.14;

int height(const QFont& font) {
  return QFontMetrics(font).height();
}

int width(const QFont& font, const QString& text) {
  return QFontMetrics(font).horizontalAdvance(text);
}

QFont fontOf(const QStyleOptionViewItem& option, TextStyle style) {
  return styled(option.font, style);
}

int headingTop(const AppsLine& line) {
  return line.section == 0 ? kFirstHeadingTop : kHeadingTop;
}

int headingHeight(const QStyleOptionViewItem& option, const AppsLine& line) {
  return headingTop(line) + AppsPainter::titleHeight(option) + kSubtitleGap +
         height(fontOf(option, TextStyle::smallCaption)) + kHeadingBottom;
}

int textsHeight(const QStyleOptionViewItem& option, const AppsLine& entry) {
  const int name = height(option.font);
  return !entry.detail.empty() ? name + kDetailGap + height(fontOf(option, TextStyle::caption))
                               : name;
}

int entryHeight(const QStyleOptionViewItem& option, const AppsLine& entry) {
  return std::max(kSymbolWidth, textsHeight(option, entry)) + 2 * kEntryMargin;
}

int emptyHeight(const QStyleOptionViewItem& option, const AppsLine& line) {
  const int wide = option.rect.width() - 2 * kRowPadding - kSymbolWidth - kSymbolGap;
  const QRect room(0, 0, wide, QWIDGETSIZE_MAX);
  const QFontMetrics metrics(fontOf(option, TextStyle::callout));
  return metrics.boundingRect(room, Qt::TextWordWrap, qt(line.text)).height() + 2 * kEmptyMargin;
}

int lineHeight(const QStyleOptionViewItem& option, const AppsLine& line) {
  switch (line.kind) {
    case AppsLine::Kind::heading:
      return headingHeight(option, line);
    case AppsLine::Kind::empty:
      return emptyHeight(option, line);
    case AppsLine::Kind::entry:
      return entryHeight(option, line);
  }
  return 0;
}

}  // namespace

/// Where and how a line is drawn. All rectangles are given for a script that runs to the right.
struct AppsPainter::Canvas {
  QPainter& painter;
  const QStyleOptionViewItem& option;
  Surface surface;

  [[nodiscard]] QRect content() const {
    return option.rect.adjusted(kRowPadding, 0, -kRowPadding, 0);
  }

  [[nodiscard]] QRect placed(const QRect& rect) const {
    return QStyle::visualRect(option.direction, option.rect, rect);
  }

  void text(const QRect& rect, const QFont& font, const QColor& color, const QString& text,
            int flags = Qt::AlignVCenter | Qt::TextSingleLine) const {
    const auto start = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(placed(rect), static_cast<int>(start | Qt::AlignAbsolute) | flags, text);
  }

  void symbol(const QRect& rect, std::string_view name, const QColor& color) const {
    symbols::draw(painter, qt(name), placed(rect), color);
  }
};

int AppsPainter::titleHeight(const QStyleOptionViewItem& option) {
  return std::max(kSymbolWidth, height(fontOf(option, TextStyle::headline)));
}

void AppsPainter::paintHeadingTitle(QPainter& painter, const QStyleOptionViewItem& option,
                                    const AppsLine& heading) {
  const Canvas canvas{painter, option, Surface::base(option.palette)};
  const int end = paintTitle(canvas, heading, canvas.content());
  paintBadge(canvas, heading.count, end + kBadgeGap, canvas.content());
}

AppsPainter::AppsPainter(const AppsModel& model, QObject* parent)
    : QAbstractItemDelegate(parent), model_(model) {}

QSize AppsPainter::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  // The width does not matter: the list makes the line as wide as its own room.
  return {0, lineHeight(option, model_.line(index)) + marginBelow(index)};
}

int AppsPainter::marginBelow(const QModelIndex& index) const {
  return index.row() + 1 == model_.rowCount() ? kEndMargin : 0;
}

void AppsPainter::paint(QPainter* painter, const QStyleOptionViewItem& given,
                        const QModelIndex& index) const {
  QStyleOptionViewItem option = given;
  option.rect.adjust(0, 0, 0, -marginBelow(index));
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  const AppsLine& line = model_.line(index);
  Canvas canvas{*painter, option, Surface::base(option.palette)};
  canvas.surface.background = plateColor(canvas.surface, index);
  switch (line.kind) {
    case AppsLine::Kind::heading:
      paintHeading(canvas, line);
      break;
    case AppsLine::Kind::empty:
      paintEmpty(canvas, line);
      break;
    case AppsLine::Kind::entry:
      paintEntry(canvas, line, index);
      break;
  }
  painter->restore();
}

void AppsPainter::paintHeading(const Canvas& canvas, const AppsLine& line) {
  QRect title = canvas.content();
  title.setTop(title.top() + headingTop(line));
  title.setHeight(titleHeight(canvas.option));
  const int end = paintTitle(canvas, line, title);
  paintBadge(canvas, line.count, end + kBadgeGap, title);

  QRect subtitle = canvas.content().adjusted(kSymbolWidth + kSymbolGap, 0, 0, 0);
  subtitle.setTop(title.bottom() + 1 + kSubtitleGap);
  subtitle.setBottom(canvas.option.rect.bottom() - kHeadingBottom);
  canvas.text(subtitle, fontOf(canvas.option, TextStyle::smallCaption),
              textColor(Tone::tertiary, canvas.surface), qt(line.detail));
}

int AppsPainter::paintTitle(const Canvas& canvas, const AppsLine& heading, QRect line) {
  const QFont font = fontOf(canvas.option, TextStyle::headline);
  const QColor color = textColor(Tone::primary, canvas.surface);
  const QString title = qt(heading.text);
  canvas.symbol(QRect(line.topLeft(), QSize(kSymbolWidth, line.height())), heading.symbol, color);
  line.setLeft(line.left() + kSymbolWidth + kSymbolGap);
  canvas.text(line, font, color, title);
  return line.left() + width(font, title);
}

void AppsPainter::paintBadge(const Canvas& canvas, std::size_t count, int left, QRect line) {
  const QFont font = fontOf(canvas.option, TextStyle::caption);
  const QString number = QString::number(count);
  const int high = height(font) + 2 * kBadgeMargin;
  // A single digit in a capsule that is higher than it is wide would look like a mistake.
  const int wide = std::max(high, width(font, number) + 2 * kBadgePadding);
  QRect badge(left, 0, wide, high);
  badge.moveTop(line.top() + (line.height() - high) / 2);
  badge = canvas.placed(badge);

  const QColor secondary = textColor(Tone::secondary, canvas.surface);
  const QColor fill = mixed(secondary, canvas.surface.background, kBadgeShare);
  canvas.painter.setPen(Qt::NoPen);
  canvas.painter.setBrush(fill);
  canvas.painter.drawRoundedRect(badge, high / 2.0, high / 2.0);
  canvas.painter.setFont(font);
  canvas.painter.setPen(legible(secondary, fill, kTextContrast));
  canvas.painter.drawText(badge, Qt::AlignCenter, number);
}

void AppsPainter::paintEmpty(const Canvas& canvas, const AppsLine& line) {
  canvas.text(canvas.content().adjusted(kSymbolWidth + kSymbolGap, kEmptyMargin, 0, -kEmptyMargin),
              fontOf(canvas.option, TextStyle::callout), textColor(Tone::secondary, canvas.surface),
              qt(line.text), Qt::TextWordWrap);
}

void AppsPainter::paintEntry(const Canvas& canvas, const AppsLine& line,
                             const QModelIndex& index) const {
  paintPlate(canvas, index);
  const QColor secondary = textColor(Tone::secondary, canvas.surface);
  const bool reacts = index == feedback_.hovered || index == feedback_.ringed;
  QRect rest = canvas.content();
  canvas.symbol(QRect(rest.left(), rest.top(), kSymbolWidth, rest.height()), line.symbol,
                secondary);
  const QRect move(rest.right() + 1 - kMoveSymbol, rest.top(), kMoveSymbol, rest.height());
  canvas.symbol(move, symbols::plainArrow(line.moveSymbol),
                reacts ? textColor(Tone::primary, canvas.surface) : quietSignColor(canvas.surface));

  rest.adjust(kSymbolWidth + kSymbolGap, 0, -kMoveSymbol - kSymbolGap, 0);
  const int texts = textsHeight(canvas.option, line);
  QRect name(rest.left(), rest.top() + (rest.height() - texts) / 2, rest.width(),
             height(canvas.option.font));
  paintName(canvas, line, name);
  if (line.detail.empty()) return;
  const QFont caption = fontOf(canvas.option, TextStyle::caption);
  const QRect detail(rest.left(), name.bottom() + 1 + kDetailGap, rest.width(), height(caption));
  const QString elided =
      QFontMetrics(caption).elidedText(qt(line.detail), Qt::ElideRight, detail.width());
  canvas.text(detail, caption, secondary, elided);
}

QColor AppsPainter::plateColor(const Surface& surface, const QModelIndex& index) const {
  if (index == feedback_.pressed) return mixed(surface.text, surface.background, kPressedShare);
  if (index == feedback_.hovered) return mixed(surface.text, surface.background, kHoverShare);
  return surface.background;
}

void AppsPainter::paintPlate(const Canvas& canvas, const QModelIndex& index) const {
  const QRectF plate = QRectF(canvas.option.rect).adjusted(kPlateInset, 0, -kPlateInset, 0);
  canvas.painter.setPen(Qt::NoPen);
  canvas.painter.setBrush(canvas.surface.background);
  canvas.painter.drawRoundedRect(plate, kPlateRadius, kPlateRadius);
  if (index == feedback_.ringed) {
    const QColor accent = canvas.option.palette.color(QPalette::Highlight);
    canvas.painter.setPen(QPen(legible(accent, canvas.surface.background, kSignContrast), 2));
    canvas.painter.setBrush(Qt::NoBrush);
    canvas.painter.drawRoundedRect(plate.adjusted(1, 1, -1, -1), kPlateRadius - 1,
                                   kPlateRadius - 1);
  }
}

void AppsPainter::paintName(const Canvas& canvas, const AppsLine& entry, QRect line) {
  const QFont& font = canvas.option.font;
  if (entry.isWorking) line.setWidth(line.width() - kDotGap - kDot);
  const QString name = QFontMetrics(font).elidedText(qt(entry.text), Qt::ElideMiddle, line.width());
  canvas.text(line, font, textColor(Tone::primary, canvas.surface), name);
  if (!entry.isWorking) return;
  QRect dot(line.left() + width(font, name) + kDotGap, 0, kDot, kDot);
  dot.moveTop(line.top() + (line.height() - kDot + 1) / 2);
  canvas.painter.setPen(Qt::NoPen);
  canvas.painter.setBrush(workingColor(canvas.surface));
  canvas.painter.drawEllipse(canvas.placed(dot));
}

}  // namespace staylit::windows
