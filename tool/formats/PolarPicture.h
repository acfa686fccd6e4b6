#pragma once

#include <QColor>
#include <QRectF>
#include <vector>

class QPainter;

/// One alignment in the picture.
struct Bearing {
  double target;
  double measured;
  QColor color;
};

/// A compass rose, north up: each target as a dashed line to the rim, each measurement as a full one with a
/// dot at its end.
void DrawPolarPicture(QPainter* painter, const QRectF& square, const std::vector<Bearing>& bearings);
