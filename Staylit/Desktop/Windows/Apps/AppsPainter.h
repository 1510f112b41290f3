#pragma once

#include <QAbstractItemDelegate>
#include <QPersistentModelIndex>

#include "Staylit/Desktop/Windows/Apps/AppsModel.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {

/// Draws the lines of the Choose Apps window, as the list's delegate.
class AppsPainter : public QAbstractItemDelegate {
 public:
  /// How the list responds to the user at the moment.
  struct Feedback {
    QPersistentModelIndex hovered;
    QPersistentModelIndex pressed;
    QPersistentModelIndex ringed;  ///< Where the keyboard is.
  };

  AppsPainter(const AppsModel& model, QObject* parent);

  void setFeedback(Feedback feedback) { feedback_ = std::move(feedback); }

  void paint(QPainter* painter, const QStyleOptionViewItem& given,
             const QModelIndex& index) const override;
  /// The height of the line in a list that is as wide as the option's rectangle.
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;

  /// The height of a heading's title, which is all that `paintHeadingTitle` draws: symbol, title
  /// and badge, in the middle of the option's rectangle.
  static int titleHeight(const QStyleOptionViewItem& option);
  static void paintHeadingTitle(QPainter& painter, const QStyleOptionViewItem& option,
                                const AppsLine& heading);

 private:
  struct Canvas;

  static void paintHeading(const Canvas& canvas, const AppsLine& line);
  static int paintTitle(const Canvas& canvas, const AppsLine& heading, QRect line);
  static void paintBadge(const Canvas& canvas, std::size_t count, int left, QRect line);
  static void paintEmpty(const Canvas& canvas, const AppsLine& line);
  void paintEntry(const Canvas& canvas, const AppsLine& line, const QModelIndex& index) const;
  [[nodiscard]] int marginBelow(const QModelIndex& index) const;
  [[nodiscard]] QColor plateColor(const Surface& surface, const QModelIndex& index) const;
  void paintPlate(const Canvas& canvas, const QModelIndex& index) const;
  static void paintName(const Canvas& canvas, const AppsLine& entry, QRect line);

  const AppsModel& model_;
  Feedback feedback_;
};

}  // namespace staylit::windows
