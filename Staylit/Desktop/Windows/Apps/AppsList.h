#pragma once

#include <QListView>
#include <QPersistentModelIndex>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Windows/Apps/AppsDelegate.h"
#include "Staylit/Desktop/Windows/Apps/AppsModel.h"

namespace staylit::windows {

/// The list of the Choose Apps window. Every application is a button over its whole row. The
/// keyboard goes from application to application through both sections.
class AppsList : public QListView {
 public:
  explicit AppsList(QWidget* parent = nullptr);

  /// Called with the id of the application that the user chose.
  void setOnChoose(std::function<void(const std::string& id)> onChoose) {
    onChoose_ = std::move(onChoose);
  }

  /// Keeps the rows on the screen where they are, and the keyboard on its row.
  void showSections(const std::vector<AppsView::Section>& sections);

  /// Puts the keyboard on an application and scrolls to the application.
  void goTo(const QModelIndex& index);
  void goToFirst() { goTo(model_->nextEntry(0, 1)); }

  [[nodiscard]] const AppsModel& apps() const { return *model_; }
  /// The row under the mouse, if that row can be chosen.
  [[nodiscard]] QModelIndex hovered() const;

 protected:
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

 private:
  [[nodiscard]] AppsAnchors anchors() const;
  void holdFast(const AppsAnchors& anchors);
  [[nodiscard]] QModelIndex pageFrom(int pages) const;
  void choose(const QModelIndex& index);
  /// The application that takes the place of one that leaves its section.
  [[nodiscard]] QModelIndex successor(const QModelIndex& index) const;
  void leaveHeading();

  // Both are children of the list, so that they outlive the calls that the list makes while it is
  // destroyed.
  AppsModel* model_;
  AppsDelegate* delegate_;
  std::function<void(const std::string& id)> onChoose_;
  std::optional<QPoint> mouse_;
  QPersistentModelIndex pressed_;
  bool byKeyboard_ = false;  ///< Whether the user used the keyboard last, so that its row is shown.
};

}  // namespace staylit::windows
