#include "Staylit/Desktop/Windows/Apps/AppsList.h"

#include <QAccessible>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <algorithm>

namespace staylit::windows {
namespace {

bool choosesApplication(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      return (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    default:
      return false;
  }
}

}  // namespace

AppsList::AppsList(QWidget* parent)
    : QListView(parent),
      model_(new AppsModel(this)),
      painter_(new AppsPainter(*model_, this)),
      upperHead_(new SectionHead(SectionHead::Edge::upper, this)),
      lowerHead_(new SectionHead(SectionHead::Edge::lower, this)) {
  setModel(model_);
  setItemDelegate(painter_);
  setFrameShape(QFrame::NoFrame);
  setSelectionMode(NoSelection);
  setEditTriggers(NoEditTriggers);
  setResizeMode(Adjust);
  setVerticalScrollMode(ScrollPerPixel);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setMouseTracking(true);
  // Rows come and go by themselves. The list scrolls to the keyboard's row only when the user
  // presses a key.
  setAutoScroll(false);
  telling_.setSingleShot(true);
  telling_.setInterval(0);
  connect(&telling_, &QTimer::timeout, this, [this] { tellOfKeyboard(); });
  connect(upperHead_, &QAbstractButton::clicked, this, [this] { jumpTo(upperHeading_); });
  connect(lowerHead_, &QAbstractButton::clicked, this, [this] { jumpTo(lowerHeading_); });
}

void AppsList::showSections(const std::vector<AppsView::Section>& sections) {
  const AppsAnchors before = visibleApplications();
  if (!model_->show(sections)) return;
  doItemsLayout();
  scrollBackTo(before);
  takeKeyboardOffHeading();
  showHeads();
  viewport()->update();
}

AppsAnchors AppsList::visibleApplications() const {
  AppsAnchors visible;
  // While the list is at its top, the user wants to see what appears there.
  if (verticalScrollBar()->value() == 0) return visible;
  for (int row = 0; row < model_->rowCount(); ++row) {
    const QModelIndex index = model_->index(row);
    const QRect place = visualRect(index);
    if (!model_->isEntry(index) || place.top() < 0) continue;
    if (place.top() > viewport()->height()) break;
    visible.add(model_->line(index), place.top());
  }
  return visible;
}

void AppsList::scrollBackTo(const AppsAnchors& anchors) {
  const auto place = anchors.firstUnmoved(model_->lines());
  if (!place) return;
  const QModelIndex index = model_->index(static_cast<int>(place->row));
  QScrollBar* bar = verticalScrollBar();
  bar->setValue(bar->value() + visualRect(index).top() - static_cast<int>(place->top));
}

void AppsList::takeKeyboardOffHeading() {
  const QModelIndex current = currentIndex();
  if (!current.isValid() || model_->isEntry(current)) return;
  const QModelIndex below = model_->nextEntry(current.row(), 1);
  setCurrentIndex(below.isValid() ? below : model_->nextEntry(current.row(), -1));
}

void AppsList::putKeyboardOn(const QModelIndex& index) {
  if (!index.isValid()) return;
  setCurrentIndex(index);
  // The heading of a section comes into sight together with the section's first application.
  const QModelIndex above = model_->index(index.row() - 1);
  if (above.isValid() && !model_->isEntry(above)) scrollTo(above);
  scrollTo(index);
}

QModelIndex AppsList::hovered() const {
  if (!mousePosition_) return {};
  const QModelIndex index = indexAt(*mousePosition_);
  return model_->isEntry(index) ? index : QModelIndex();
}

QModelIndex AppsList::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
  const int row = currentIndex().row();
  QModelIndex next;
  switch (action) {
    case MoveUp:
    case MovePrevious:
      next = model_->nextEntry(row - 1, -1);
      break;
    case MoveDown:
    case MoveNext:
      next = model_->nextEntry(row + 1, 1);
      break;
    case MoveHome:
      next = model_->nextEntry(0, 1);
      break;
    case MoveEnd:
      next = model_->nextEntry(model_->rowCount() - 1, -1);
      break;
    case MovePageUp:
      next = entryOnePageAway(-1);
      break;
    case MovePageDown:
      next = entryOnePageAway(1);
      break;
    case MoveLeft:
    case MoveRight:
      break;
  }
  return next.isValid() ? next : currentIndex();
}

QModelIndex AppsList::entryOnePageAway(int direction) const {
  const QRect place = visualRect(currentIndex());
  const int step = std::max(1, viewport()->height() - place.height());
  const QModelIndex there = indexAt(place.center() + QPoint(0, direction * step));
  const int last = model_->rowCount() - 1;
  const int landing = there.isValid() ? there.row() : (direction > 0 ? last : 0);
  const QModelIndex next = model_->nextEntry(landing, -direction);
  // Where little is visible, a heading may be all that lies between the two rows.
  const int row = currentIndex().row();
  const bool isBeyond = next.isValid() && (direction > 0 ? next.row() > row : next.row() < row);
  return isBeyond ? next : model_->nextEntry(row + direction, direction);
}

void AppsList::initViewItemOption(QStyleOptionViewItem* option) const {
  QListView::initViewItemOption(option);
  option->rect = viewport()->rect();
}

void AppsList::keyPressEvent(QKeyEvent* event) {
  // The window closes on this key, which the list would take for a letter to search for.
  if (event->matches(QKeySequence::Cancel)) return event->ignore();
  usesKeyboard_ = true;
  if (choosesApplication(*event)) {
    // A key that is held down must not empty the list.
    if (!event->isAutoRepeat()) choose(currentIndex());
    return;
  }
  const QModelIndex before = currentIndex();
  QListView::keyPressEvent(event);
  if (currentIndex() != before) putKeyboardOn(currentIndex());
  viewport()->update();
}

void AppsList::mousePressEvent(QMouseEvent* event) {
  usesKeyboard_ = false;
  mousePosition_ = event->position().toPoint();
  if (event->button() == Qt::LeftButton) {
    pressed_ = hovered();
    if (pressed_.isValid()) setCurrentIndex(pressed_);
  }
  viewport()->update();
}

void AppsList::mouseMoveEvent(QMouseEvent* event) {
  mousePosition_ = event->position().toPoint();
  viewport()->update();
}

void AppsList::mouseReleaseEvent(QMouseEvent* event) {
  mousePosition_ = event->position().toPoint();
  if (event->button() != Qt::LeftButton) return;
  const QModelIndex pressed = pressed_;
  pressed_ = QModelIndex();
  viewport()->update();
  if (pressed.isValid() && pressed == hovered()) choose(pressed);
}

void AppsList::mouseDoubleClickEvent(QMouseEvent* event) {
  // Each row is a button, and the first click has put another row here: two clicks move two
  // applications, however soon the second one comes.
  mousePressEvent(event);
}

void AppsList::leaveEvent(QEvent* event) {
  QListView::leaveEvent(event);
  mousePosition_.reset();
  viewport()->update();
}

void AppsList::focusInEvent(QFocusEvent* event) {
  QListView::focusInEvent(event);
  switch (event->reason()) {
    case Qt::MouseFocusReason:
      break;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
      return;
    default:
      usesKeyboard_ = true;
  }
  if (usesKeyboard_ && !model_->isEntry(currentIndex())) putKeyboardOnFirst();
  tellOfKeyboardSoon();
}

/// Not QListView's, which tells screen readers of each row that the keyboard passes while rows come
/// and go, even when the keyboard is elsewhere.
void AppsList::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  // NOLINTNEXTLINE(bugprone-parent-virtual-call)
  QAbstractItemView::currentChanged(current, previous);
  tellOfKeyboardSoon();
}

void AppsList::tellOfKeyboardSoon() {
  // Qt tells screen readers of the list itself after it has got the keyboard.
  if (hasFocus()) telling_.start();
}

void AppsList::tellOfKeyboard() {
  if (!hasFocus() || !model_->isEntry(currentIndex())) return;
  QAccessibleEvent event(this, QAccessible::Focus);
  event.setChild(currentIndex().row());
  QAccessible::updateAccessibility(&event);
}

void AppsList::paintEvent(QPaintEvent* event) {
  const QModelIndex under = hovered();
  const bool isPressed = pressed_.isValid() && pressed_ == under;
  const bool showsKeyboard = usesKeyboard_ && hasFocus();
  // While a mouse button is down, no other row responds.
  painter_->setFeedback({pressed_.isValid() ? QModelIndex() : under,
                         isPressed ? under : QModelIndex(),
                         showsKeyboard ? currentIndex() : QModelIndex()});
  QListView::paintEvent(event);
}

void AppsList::scrollContentsBy(int dx, int dy) {
  QListView::scrollContentsBy(dx, dy);
  showHeads();
  // Another row may lie under the mouse now.
  viewport()->update();
}

void AppsList::resizeEvent(QResizeEvent* event) {
  QListView::resizeEvent(event);
  upperHead_->place(viewport()->geometry());
  lowerHead_->place(viewport()->geometry());
  showHeads();
}

void AppsList::showHeads() {
  upperHeading_ = -1;
  int lower = -1;
  for (int row = 0; row < model_->rowCount(); ++row) {
    const QModelIndex index = model_->index(row);
    if (model_->line(index).kind != AppsLine::Kind::heading) continue;
    const QRect place = visualRect(index);
    if (place.top() < 0) upperHeading_ = row;
    if (lower < 0 && place.bottom() > viewport()->height()) lower = row;
  }
  lowerHeading_ = lower;
  const auto line = [this](int row) {
    return row < 0 ? nullptr : &model_->line(model_->index(row));
  };
  upperHead_->show(line(upperHeading_));
  lowerHead_->show(line(lowerHeading_));
}

void AppsList::jumpTo(int headingRow) {
  if (headingRow >= 0) QListView::scrollTo(model_->index(headingRow), PositionAtTop);
}

void AppsList::scrollTo(const QModelIndex& index, ScrollHint hint) {
  if (!index.isValid()) return;
  QListView::scrollTo(index, hint);
  // The heads at the edges must not cover what is to be seen.
  QScrollBar* bar = verticalScrollBar();
  const QRect place = visualRect(index);
  const bool isHeading = model_->line(index).kind == AppsLine::Kind::heading;
  const int above = isHeading ? 0 : upperHead_->covered();
  const int room = viewport()->height() - lowerHead_->covered();
  if (place.top() < above) {
    bar->setValue(bar->value() + place.top() - above);
  } else if (place.bottom() >= room) {
    bar->setValue(bar->value() + place.bottom() + 1 - room);
  }
}

void AppsList::choose(const QModelIndex& index) {
  if (!model_->isEntry(index) || !onChoose_) return;
  const std::string id = model_->line(index).id;
  const QPersistentModelIndex next = nextAfter(index);
  onChoose_(id);
  if (!next.isValid()) return;
  usesKeyboard_ ? putKeyboardOn(next) : setCurrentIndex(next);
}

QModelIndex AppsList::nextAfter(const QModelIndex& index) const {
  const std::size_t section = model_->line(index).section;
  for (const int step : {1, -1}) {
    const QModelIndex next = model_->nextEntry(index.row() + step, step);
    if (next.isValid() && model_->line(next).section == section) return next;
  }
  return model_->nextEntry(index.row() + 1, 1);
}

}  // namespace staylit::windows
