// The map's legend: what sizes and colours mean.
#pragma once

#include <QPainter>

#include "background.h"

QSizeF legendSize(const QFontMetricsF &metrics);

// Draws it with its upper left corner at `corner`; sizes in logical pixels.
void drawLegend(QPainter &painter, QPointF corner, const MapColours &colours);
