#include "Staylit/Desktop/Windows/FixedWindow.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QVBoxLayout>

#include "Staylit/Desktop/Windows/Texts.h"

namespace staylit::windows {
namespace {

constexpr Qt::WindowFlags kFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

QSize rounded(Size size) {
  return {qRound(size.width), qRound(size.height)};
}

}  // namespace

FixedWindow::FixedWindow(const WindowStyle& style) : QWidget(nullptr, kFlags) {
  setWindowTitle(qt(style.title));
  setFixedSize(rounded(style.contentSize));
  connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
}

void FixedWindow::setContent(QWidget* content) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(content);
}

void FixedWindow::keyPressEvent(QKeyEvent* event) {
  if (!event->matches(QKeySequence::Cancel)) return QWidget::keyPressEvent(event);
  const bool undone = onEscape_ && onEscape_();
  if (!undone) close();
}

}  // namespace staylit::windows
