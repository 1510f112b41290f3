#include "Staylit/Desktop/Windows/FixedWindow.h"

#include <QKeyEvent>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

#include "Staylit/Desktop/Windows/Parts/QtText.h"

namespace staylit::windows {
namespace {

constexpr Qt::WindowFlags kFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

/// The approximate size of a desktop's title bar and frame.
constexpr int kFrame = 48;

QSize rounded(Size size) {
  return {qRound(size.width), qRound(size.height)};
}

}  // namespace

QSize fittingSize(QSize wanted, QSize room) {
  return {std::min(wanted.width(), room.width()),
          std::min(wanted.height(), std::max(room.height() - kFrame, kFrame))};
}

FixedWindow::FixedWindow(const WindowStyle& style)
    : QWidget(nullptr, kFlags), wanted_(rounded(style.contentSize)) {
  setWindowTitle(qt(style.title));
  growTo(0);
  connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
}

void FixedWindow::setContent(QWidget* content) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(content);
}

void FixedWindow::growTo(int contentHeight) {
  wanted_.setHeight(std::max(wanted_.height(), contentHeight));
  setFixedSize(screen() ? fittingSize(wanted_, screen()->availableSize()) : wanted_);
}

void FixedWindow::keyPressEvent(QKeyEvent* event) {
  if (!event->matches(QKeySequence::Cancel)) return QWidget::keyPressEvent(event);
  const bool undone = onEscape_ && onEscape_();
  if (!undone) close();
}

}  // namespace staylit::windows
