#pragma once

#include <QCheckBox>
#include <QVariantAnimation>

#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {

/// A toggle switch: a check box in everything but its looks.
class Switch : public QCheckBox {
 public:
  static constexpr int kRing = 3;  ///< Room for the focus ring on every side.

  explicit Switch(QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  [[nodiscard]] bool hitButton(const QPoint& position) const override;

 private:
  void slide(bool on);
  [[nodiscard]] double position() const;
  [[nodiscard]] QRectF track() const;
  void paintTrack(QPainter& painter, const QRectF& track) const;
  void paintThumb(QPainter& painter, const QRectF& track) const;
  [[nodiscard]] QColor onThumb(const Surface& card) const;
  [[nodiscard]] static QColor offThumb(const Surface& card);
  void paintRing(QPainter& painter, const QRectF& track) const;

  QVariantAnimation sliding_;  ///< From 0, which is off, to 1.
  bool byKeyboard_ = false;
};

}  // namespace staylit::windows
