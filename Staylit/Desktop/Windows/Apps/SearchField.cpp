#include "Staylit/Desktop/Windows/Apps/SearchField.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>

#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"
#include "Staylit/Desktop/Windows/Parts/Spoken.h"
#include "Staylit/Desktop/Windows/Parts/Symbols.h"
#include "Tidewell/Words.h"

namespace staylit::windows {
namespace {

using tidewell::Words;

constexpr int kFieldPadding = 7;
constexpr int kSpacing = 6;
constexpr int kFieldRadius = 7;
constexpr int kSymbol = 16;
constexpr int kEditMargin = 1;  ///< Above and below the text.

}  // namespace

SearchField::SearchField(const AppsView::Header& texts, QWidget* parent)
    : QWidget(parent),
      symbol_(qt(texts.searchSymbol)),
      edit_(new QLineEdit(this)),
      // TRANSLATORS: the tool tip of the button that empties the search.
      clear_(new SymbolButton(qt(texts.clearSymbol), qt(Words::shown().phrase("Clear search")),
                              this)) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(kFieldPadding, kFieldPadding, kFieldPadding, kFieldPadding);
  layout->setSpacing(kSpacing);
  // The spacing is added here, because a layout adds none beside a fixed space.
  layout->addSpacing(kSymbol + kSpacing);
  layout->addWidget(edit_);
  layout->addWidget(clear_);

  edit_->setFrame(false);
  // The line edit draws its caret on the first letter; the thin space keeps them apart.
  edit_->setPlaceholderText(QChar(0x2009) + qt(texts.searchPlaceholder));
  // Without a description, screen readers would be told of the placeholder, which is the name.
  describe(*edit_, qt(texts.searchPlaceholder), qt(texts.subtitle));
  edit_->installEventFilter(this);
  followPalette();
  followFont();
  setCursor(Qt::IBeamCursor);

  clear_->hide();
  connect(edit_, &QLineEdit::textChanged, clear_,
          [this](const QString& text) { clear_->setVisible(!text.isEmpty()); });
  connect(clear_, &QToolButton::clicked, edit_, [this] {
    edit_->clear();
    edit_->setFocus(Qt::OtherFocusReason);
  });
}

void SearchField::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const Surface surface = Surface::base(palette());
  // Where the base and the window have the same colour, only the line shows where the field is.
  const QColor accent = palette().color(QPalette::Highlight);
  const QPen pen = edit_->hasFocus() ? QPen(legible(accent, surface.background, kSignContrast), 2)
                                     : QPen(lineColor(Surface::window(palette())), 1);
  const double half = pen.widthF() / 2;
  painter.setPen(pen);
  painter.setBrush(surface.background);
  painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), kFieldRadius - half,
                          kFieldRadius - half);
  const QRect symbol =
      QStyle::visualRect(layoutDirection(), rect(), QRect(kFieldPadding, 0, kSymbol, height()));
  symbols::draw(painter, symbol_, symbol, textColor(Tone::secondary, surface));
}

void SearchField::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) followPalette();
}

bool SearchField::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  if (event->type() == QEvent::FontChange) followFont();
  return QWidget::eventFilter(watched, event);
}

void SearchField::mousePressEvent(QMouseEvent*) {
  edit_->setFocus(Qt::MouseFocusReason);
}

/// Some styles give a line edit room for a frame that this one does not have.
void SearchField::followFont() {
  edit_->setFixedHeight(edit_->fontMetrics().height() + 2 * kEditMargin);
}

void SearchField::followPalette() {
  QPalette own = palette();
  own.setColor(QPalette::PlaceholderText, textColor(Tone::secondary, Surface::base(own)));
  own.setColor(QPalette::Base, Qt::transparent);
  edit_->setPalette(own);
}

}  // namespace staylit::windows
