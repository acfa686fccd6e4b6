#include "tool/formats/PolarPicture.h"

#include <QPainter>
#include <QtMath>

namespace {

const QColor faint(200, 204, 210);
const QColor ink(60, 66, 74);

/// Azimuths run clockwise from north, degrees.
QPointF OnCircle(const QPointF& center, double radius, double azimuth) {
  const double angle = qDegreesToRadians(azimuth);
  return center + QPointF(radius * std::sin(angle), -radius * std::cos(angle));
}

void DrawRose(QPainter* painter, const QPointF& center, double radius) {
  painter->setBrush(Qt::NoBrush);
  painter->setPen(QPen(faint, radius / 80));
  for (const double part : {1.0 / 3, 2.0 / 3, 1.0})
    painter->drawEllipse(center, radius * part, radius * part);
  for (int azimuth = 0; azimuth < 360; azimuth += 30) {
    painter->drawLine(OnCircle(center, radius * 0.94, azimuth), OnCircle(center, radius * 1.03, azimuth));
    const QString label = azimuth == 0     ? QStringLiteral("N")
                          : azimuth == 90  ? QStringLiteral("E")
                          : azimuth == 180 ? QStringLiteral("S")
                          : azimuth == 270 ? QStringLiteral("W")
                                           : QString::number(azimuth);
    const double side = radius * 0.4;
    const QPointF at = OnCircle(center, radius * 1.16, azimuth);
    painter->save();
    painter->setPen(ink);
    painter->drawText(QRectF(at.x() - side / 2, at.y() - side / 2, side, side), Qt::AlignCenter, label);
    painter->restore();
  }
}

}  // namespace

void DrawPolarPicture(QPainter* painter, const QRectF& square, const std::vector<Bearing>& bearings) {
  const QPointF center = square.center();
  const double radius = square.width() / 2 / 1.3;
  painter->save();
  DrawRose(painter, center, radius);
  for (const Bearing& bearing : bearings) {
    painter->setPen(QPen(bearing.color, radius / 50, Qt::DashLine, Qt::FlatCap));
    painter->drawLine(center, OnCircle(center, radius, bearing.target));
  }
  for (const Bearing& bearing : bearings) {
    const QPointF end = OnCircle(center, radius * 0.82, bearing.measured);
    painter->setPen(QPen(bearing.color, radius / 28, Qt::SolidLine, Qt::RoundCap));
    painter->drawLine(center, end);
    painter->setBrush(bearing.color);
    painter->drawEllipse(end, radius / 22, radius / 22);
  }
  painter->restore();
}
