#pragma once

#include <QColor>
#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QString>
#include <string_view>

/// The symbols that the program names. The module brings the drawings. Main thread only.
namespace staylit::windows::symbols {

/// Draws a symbol in one colour, in the middle of `frame` and as large as fits: its side is a whole
/// number of points, and its corner lies on a whole pixel. Draws nothing when there is no such
/// symbol.
void draw(QPainter& painter, const QString& name, const QRectF& frame, const QColor& color);

/// The arrow of a symbol such as "arrow.down.circle", without the circle: the circled arrow also
/// stands for downloads. Any other name stays.
std::string_view plainArrow(std::string_view name);

/// The symbol as a picture of `side` points, or a part of a pixel more, that is sharp at this ratio
/// of pixels to points. Null when there is no such symbol, and without a side.
QPixmap pixmap(const QString& name, int side, const QColor& color, qreal pixelRatio);

}  // namespace staylit::windows::symbols
