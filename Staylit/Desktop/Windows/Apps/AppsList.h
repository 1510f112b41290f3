#pragma once

#include <QListView>
#include <QPersistentModelIndex>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Windows/Apps/AppsModel.h"
#include "Staylit/Desktop/Windows/Apps/AppsPainter.h"
#include "Staylit/Desktop/Windows/Apps/SectionHead.h"

namespace staylit::windows {

/// The list of the Choose Apps window. Every application is a button over its whole row. The
/// keyboard goes from application to application through both sections. The headings that are not
/// in sight stand at the edges, where a click leads to their sections.
class AppsList : public QListView {
 public:
  explicit AppsList(QWidget* parent = nullptr);

  /// Called with the id of the application that the user chose.
  void setOnChoose(std::function<void(const std::string& id)> onChoose) {
    onChoose_ = std::move(onChoose);
  }

  /// Keeps the rows on the screen in their places, and the keyboard on its application.
  void showSections(const std::vector<AppsView::Section>& sections);

  /// Puts the keyboard on an application and scrolls it into sight. Does nothing for an invalid
  /// index.
  void putKeyboardOn(const QModelIndex& index);
  void putKeyboardOnFirst() { putKeyboardOn(model_->nextEntry(0, 1)); }

  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

  [[nodiscard]] const AppsModel& apps() const { return *model_; }
  /// The application under the mouse; invalid when there is none.
  [[nodiscard]] QModelIndex hovered() const;

 protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void showHeads();
  void jumpTo(int headingRow);
  /// The applications in sight, and where; none while the list is at its top.
  [[nodiscard]] AppsAnchors visibleApplications() const;
  void scrollBackTo(const AppsAnchors& anchors);
  void takeKeyboardOffHeading();
  /// Screen readers are told on which application the keyboard is, once all has happened that
  /// happens now.
  void tellOfKeyboardSoon();
  void tellOfKeyboard();
  /// The application about one page below the keyboard's; above it for a `direction` of -1.
  [[nodiscard]] QModelIndex entryOnePageAway(int direction) const;
  void choose(const QModelIndex& index);
  /// The application on which the keyboard goes on when the one at `index` leaves its section.
  [[nodiscard]] QModelIndex nextAfter(const QModelIndex& index) const;

  // The list is the parent of all four, because it still calls them while it is destroyed.
  AppsModel* model_;
  AppsPainter* painter_;
  SectionHead* upperHead_;
  SectionHead* lowerHead_;
  int upperHeading_ = -1;  ///< The rows of the headings that the two show; -1 for none.
  int lowerHeading_ = -1;
  std::function<void(const std::string& id)> onChoose_;
  std::optional<QPoint> mousePosition_;  ///< Absent while the mouse is elsewhere.
  QPersistentModelIndex pressed_;  ///< Where the mouse button went down; invalid while it is up.
  QTimer telling_;
  bool usesKeyboard_ = false;  ///< Whether the user used the keyboard last and not the mouse.
};

}  // namespace staylit::windows
