#include "Staylit/Desktop/Windows/Parts/Symbols.h"

#include <QPixmapCache>
#include <QSvgRenderer>
#include <QtMath>

namespace staylit::windows::symbols {
namespace {

QString path(const QString& name) {
  return QStringLiteral(":/staylit/symbols/") + name + QStringLiteral(".svg");
}

/// The ratio belongs to it, because a picture with another ratio is a copy of all pixels.
QString cacheKey(const QString& name, int pixels, const QColor& color, qreal pixelRatio) {
  return QStringLiteral("staylit/%1/%2/%3/%4")
      .arg(name)
      .arg(pixels)
      .arg(color.rgba())
      .arg(pixelRatio);
}

/// Only the shape of the drawing matters; its own colours do not.
QPixmap rendered(const QString& name, int pixels, const QColor& color, qreal pixelRatio) {
  QSvgRenderer drawing(path(name));
  if (!drawing.isValid()) return {};
  QPixmap pixmap(pixels, pixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.setAspectRatioMode(Qt::KeepAspectRatio);
  drawing.render(&painter, QRectF(0, 0, pixels, pixels));
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  painter.end();
  pixmap.setDevicePixelRatio(pixelRatio);
  return pixmap;
}

}  // namespace

void draw(QPainter& painter, const QString& name, const QRectF& frame, const QColor& color) {
  const int side = qFloor(qMin(frame.width(), frame.height()));
  const QPixmap picture = pixmap(name, side, color, painter.device()->devicePixelRatioF());
  if (picture.isNull()) return;
  QRectF place(0, 0, side, side);
  place.moveCenter(frame.center());
  // A picture off the pixel grid would be blurred, and with a ratio of 1.5 a whole point need not
  // lie on a whole pixel.
  const QTransform toPixels = painter.deviceTransform();
  const QPointF corner = toPixels.map(place.topLeft());
  painter.drawPixmap(toPixels.inverted().map(QPointF(corner.toPoint())), picture);
}

std::string_view plainArrow(std::string_view name) {
  constexpr std::string_view kCircle = ".circle";
  const bool isArrow = name.starts_with("arrow.") && name.ends_with(kCircle);
  if (isArrow) name.remove_suffix(kCircle.size());
  return name;
}

QPixmap pixmap(const QString& name, int side, const QColor& color, qreal pixelRatio) {
  if (side < 1) return {};
  const int pixels = qCeil(side * pixelRatio);
  const QString key = cacheKey(name, pixels, color, pixelRatio);
  QPixmap found;
  if (!QPixmapCache::find(key, &found)) {
    found = rendered(name, pixels, color, pixelRatio);
    QPixmapCache::insert(key, found);
  }
  return found;
}

}  // namespace staylit::windows::symbols
