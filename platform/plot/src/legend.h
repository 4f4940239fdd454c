// The map's legend: what sizes and colours mean.
#pragma once

#include <QPainter>

#include "map_colours.h"

// As large as the map has room for.
enum class LegendForm { Full, Compact, None };

struct Legend {
    LegendForm form = LegendForm::None;
    bool unknownDepths = false; // there are some to be explained

    // For a map of a size in logical pixels.
    static Legend fitting(const QSizeF &map, const QFontMetricsF &metrics, bool unknownDepths);
    QSizeF size(const QFontMetricsF &metrics) const;

    // Draws it with its upper left corner at `corner`; sizes in logical pixels.
    void draw(QPainter &painter, QPointF corner, const MapColours &colours) const;
};
