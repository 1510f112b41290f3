#pragma once

#include <QAbstractButton>

#include "Staylit/AppsLines.h"
#include "Staylit/Desktop/Windows/Apps/AppsPainter.h"

namespace staylit::windows {

/// The heading of a section whose own heading is not in sight, at the upper or lower edge of the
/// list. A click on it is to lead to the section. The keyboard passes it: it goes from application
/// to application. Owned by the list.
class SectionHead : public QAbstractButton {
 public:
  enum class Edge { upper, lower };

  SectionHead(Edge edge, QWidget* list);

  /// Shows the heading; hides this when there is none.
  void show(const AppsLine* heading);
  /// Puts this at its edge of the area, which is as wide as this becomes.
  void place(const QRect& area);
  /// How much of the list this covers now.
  [[nodiscard]] int covered() const { return isVisible() ? height() : 0; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  /// Moves the list, which would not get the event of a widget that lies on it.
  void wheelEvent(QWheelEvent* event) override;

 private:
  const Edge edge_;
  AppsLine heading_;
};

}  // namespace staylit::windows
