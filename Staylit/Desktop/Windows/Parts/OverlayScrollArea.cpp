#include "Staylit/Desktop/Windows/Parts/OverlayScrollArea.h"

#include <QStyle>

namespace staylit::windows {

OverlayScrollArea::OverlayScrollArea(QWidget* parent)
    : QScrollArea(parent), bar_(new QScrollBar(Qt::Vertical, this)) {
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  // The area's own bar is hidden, but it does the scrolling.
  QScrollBar* hidden = verticalScrollBar();
  connect(hidden, &QScrollBar::rangeChanged, this, [this] { followRange(); });
  connect(hidden, &QScrollBar::valueChanged, bar_, &QScrollBar::setValue);
  connect(bar_, &QScrollBar::valueChanged, hidden, &QScrollBar::setValue);
  followRange();
}

void OverlayScrollArea::followRange() {
  const QScrollBar* hidden = verticalScrollBar();
  bar_->setRange(hidden->minimum(), hidden->maximum());
  bar_->setPageStep(hidden->pageStep());
  bar_->setSingleStep(hidden->singleStep());
  bar_->setValue(hidden->value());
  bar_->setVisible(bar_->maximum() > bar_->minimum());
}

void OverlayScrollArea::placeBar() {
  const int wide = bar_->sizeHint().width();
  bar_->setGeometry(
      QStyle::visualRect(layoutDirection(), rect(), QRect(width() - wide, 0, wide, height())));
  bar_->raise();
}

void OverlayScrollArea::resizeEvent(QResizeEvent* event) {
  QScrollArea::resizeEvent(event);
  placeBar();
  followRange();
}

}  // namespace staylit::windows
