#include "Staylit/Desktop/Windows/Parts/OverlayScrollArea.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStyle>

namespace staylit::windows {
namespace {

/// Hides the lower edge of the content more and more, and lets all clicks through.
class Fade : public QWidget {
 public:
  explicit Fade(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QColor ground = palette().color(QPalette::Window);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(1, ground);
    ground.setAlpha(0);
    gradient.setColorAt(0, ground);
    QPainter(this).fillRect(rect(), gradient);
  }
};

}  // namespace

OverlayScrollArea::OverlayScrollArea(QWidget* parent)
    : QScrollArea(parent), fade_(new Fade(this)), bar_(new QScrollBar(Qt::Vertical, this)) {
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  // The area's own bar is hidden, but it does the scrolling.
  QScrollBar* hidden = verticalScrollBar();
  connect(hidden, &QScrollBar::rangeChanged, this, [this] { followRange(); });
  connect(hidden, &QScrollBar::valueChanged, bar_, &QScrollBar::setValue);
  connect(hidden, &QScrollBar::valueChanged, this, [this] { followRange(); });
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
  fade_->setVisible(bar_->value() < bar_->maximum());
}

void OverlayScrollArea::placeBar() {
  const int wide = bar_->sizeHint().width();
  bar_->setGeometry(
      QStyle::visualRect(layoutDirection(), rect(), QRect(width() - wide, 0, wide, height())));
  fade_->setGeometry(0, height() - kRoomForFade, width(), kRoomForFade);
  fade_->raise();
  bar_->raise();
}

void OverlayScrollArea::resizeEvent(QResizeEvent* event) {
  QScrollArea::resizeEvent(event);
  placeBar();
  followRange();
}

}  // namespace staylit::windows
