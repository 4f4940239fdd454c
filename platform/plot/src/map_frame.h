// Which part of the projected plane a drawing shows.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

struct MapFrame {
    QPointF centre;   // the plane's point (degrees, y up) in the middle of the drawing
    double scale = 1; // pixels per degree
    QSizeF size;      // of the drawing, in pixels

    QPointF toPixel(QPointF plane) const
    {
        return {size.width() / 2 + (plane.x() - centre.x()) * scale,
                size.height() / 2 - (plane.y() - centre.y()) * scale};
    }
    QPointF toPlane(QPointF pixel) const
    {
        return {centre.x() + (pixel.x() - size.width() / 2) / scale,
                centre.y() - (pixel.y() - size.height() / 2) / scale};
    }
    // A rectangle of pixels in the plane, top() being its lower edge there.
    QRectF toPlane(const QRectF &pixels) const
    {
        return QRectF(toPlane(pixels.topLeft()), toPlane(pixels.bottomRight())).normalized();
    }
};
