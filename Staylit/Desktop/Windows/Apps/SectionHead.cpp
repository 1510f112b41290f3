#include "Staylit/Desktop/Windows/Apps/SectionHead.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QWheelEvent>

#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {
namespace {

constexpr int kHeadMargin = 7;  ///< Above and below the title.
constexpr double kHeadHoverShare = 0.07;
constexpr double kHeadPressedShare = 0.14;

}  // namespace

SectionHead::SectionHead(Edge edge, QWidget* list) : QAbstractButton(list), edge_(edge) {
  setFocusPolicy(Qt::NoFocus);
  setCursor(Qt::PointingHandCursor);
  setAttribute(Qt::WA_Hover);
  hide();
}

void SectionHead::show(const AppsLine* heading) {
  setVisible(heading != nullptr);
  if (!heading || heading_ == *heading) return;
  heading_ = *heading;
  setAccessibleName(qt(heading_.spoken()));
  update();
}

void SectionHead::place(const QRect& area) {
  QStyleOptionViewItem option;
  option.font = font();
  const int high = AppsPainter::titleHeight(option) + 2 * kHeadMargin + 1;
  const int top = edge_ == Edge::upper ? area.top() : area.bottom() + 1 - high;
  setGeometry(area.left(), top, area.width(), high);
}

void SectionHead::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const Surface surface = Surface::base(palette());
  const double share = isDown() ? kHeadPressedShare : underMouse() ? kHeadHoverShare : 0;
  painter.fillRect(rect(), mixed(surface.text, surface.background, share));
  const int line = edge_ == Edge::upper ? height() - 1 : 0;
  painter.fillRect(QRect(0, line, width(), 1), lineColor(surface));
  QStyleOptionViewItem option;
  option.initFrom(this);
  option.font = font();
  option.rect = rect().adjusted(0, kHeadMargin, 0, -kHeadMargin);
  AppsPainter::paintHeadingTitle(painter, option, heading_);
}

void SectionHead::wheelEvent(QWheelEvent* event) {
  auto* list = qobject_cast<QAbstractScrollArea*>(parentWidget());
  if (list) QCoreApplication::sendEvent(list->viewport(), event);
}

}  // namespace staylit::windows
