#pragma once

#include <QColor>
#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QString>

namespace staylit::windows {

/// The symbols that the program names; our own drawings, which come with the module.
namespace symbols {

[[nodiscard]] bool has(const QString& name);

/// Draws a symbol in one colour, as large as fits into `frame` and in its middle. Nothing when
/// there is no such symbol.
void draw(QPainter& painter, const QString& name, const QRectF& frame, const QColor& color);

/// The same as a picture of `side` points, sharp at this ratio of pixels to points. Null when there
/// is no such symbol.
QPixmap pixmap(const QString& name, int side, const QColor& color, qreal pixelRatio);

}  // namespace symbols

}  // namespace staylit::windows
