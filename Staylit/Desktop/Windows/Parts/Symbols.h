#pragma once

#include <QColor>
#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QString>

/// The symbols that the program names. They are our own drawings, and come with the module.
namespace staylit::windows::symbols {

[[nodiscard]] bool has(const QString& name);

/// Draws a symbol in one colour, in the middle of `frame` and as large as fits. Draws nothing when
/// there is no such symbol.
void draw(QPainter& painter, const QString& name, const QRectF& frame, const QColor& color);

/// The same as a picture of `side` points, sharp at this ratio of pixels to points. Null when there
/// is no such symbol.
QPixmap pixmap(const QString& name, int side, const QColor& color, qreal pixelRatio);

}  // namespace staylit::windows::symbols
