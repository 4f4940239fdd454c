#include "legend.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <orvane/plot.h>

#include "event_style.h"

static constexpr double barWidth = 14, padding = 10;

namespace {
struct Scale {
    std::vector<int> magnitudes;
    std::vector<int> depths; // km
    double barHeight;
};
} // namespace

static const Scale &scaleOf(LegendForm form)
{
    static const Scale full{{2, 4, 5, 6, 7, 8}, {0, 35, 100, 200, 300, 500, 700}, 150};
    static const Scale compact{{3, 5, 7}, {0, 100, 300, 700}, 80};
    return form == LegendForm::Full ? full : compact;
}

static double columnWidth(const QFontMetricsF &metrics)
{
    return std::max({metrics.horizontalAdvance(OvEventMap::tr("Magnitude")),
                     metrics.horizontalAdvance(OvEventMap::tr("Depth (km)")),
                     barWidth + 8 + metrics.horizontalAdvance(OvEventMap::tr("unknown")),
                     2 * largestRadius + 12 + metrics.horizontalAdvance(QStringLiteral("0"))});
}

static double rowHeight(int magnitude, const QFontMetricsF &metrics)
{
    return std::max(2 * eventRadius(magnitude) + 3, metrics.height());
}

static double sizesHeight(const Scale &scale, const QFontMetricsF &metrics)
{
    double height = 0;
    for (const int magnitude : scale.magnitudes)
        height += rowHeight(magnitude, metrics);
    return height;
}

Legend Legend::fitting(const QSizeF &map, const QFontMetricsF &metrics, bool unknownDepths)
{
    for (const LegendForm form : {LegendForm::Full, LegendForm::Compact}) {
        const Legend legend{form, unknownDepths};
        const QSizeF size = legend.size(metrics);
        const double below = 2 * metrics.height() + 32; // for the scale of distances
        if (size.height() + below <= map.height() && 3 * size.width() <= map.width())
            return legend;
    }
    return {LegendForm::None, unknownDepths};
}

QSizeF Legend::size(const QFontMetricsF &metrics) const
{
    if (form == LegendForm::None)
        return {0, 0};
    const Scale &scale = scaleOf(form);
    const double unknown = unknownDepths ? 1.5 * metrics.height() : 0;
    return {columnWidth(metrics) + 2 * padding,
            3 * metrics.height() + sizesHeight(scale, metrics) + scale.barHeight + 3.5 * padding + unknown};
}

static double drawSizes(QPainter &painter, QPointF at, const Scale &scale, const MapColours &colours)
{
    const QFontMetricsF metrics(painter.font());
    const double column = eventRadius(scale.magnitudes.back());
    double y = at.y();
    for (const int magnitude : scale.magnitudes) {
        const double radius = eventRadius(magnitude), height = rowHeight(magnitude, metrics);
        const QPointF middle(at.x() + column, y + height / 2);
        painter.setPen(QPen(colours.outline, 0.7));
        painter.setBrush(depthColour(35));
        painter.drawEllipse(middle, radius, radius);
        painter.setPen(colours.text);
        painter.drawText(QRectF(at.x() + 2 * column + 10, y, 60, height), Qt::AlignVCenter,
                         QString::number(magnitude));
        y += height;
    }
    return y;
}

static void drawDepths(QPainter &painter, QPointF at, const Scale &scale, const MapColours &colours)
{
    const int steps = static_cast<int>(scale.barHeight);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < steps; ++i) {
        const double fraction = (i + 0.5) / steps;
        painter.fillRect(QRectF(at.x(), at.y() + i, barWidth, 1.5),
                         depthColour(deepest * fraction * fraction));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.coast, 0.8));
    painter.drawRect(QRectF(at.x(), at.y(), barWidth, scale.barHeight));
    for (const int depth : scale.depths) {
        const double y = at.y() + scale.barHeight * depthFraction(depth);
        painter.setPen(QPen(colours.coast, 0.8));
        painter.drawLine(QPointF(at.x() + barWidth, y), QPointF(at.x() + barWidth + 4, y));
        painter.setPen(colours.text);
        painter.drawText(QRectF(at.x() + barWidth + 8, y - 10, 60, 20), Qt::AlignVCenter,
                         QString::number(depth));
    }
}

static void drawUnknown(QPainter &painter, QPointF at, const MapColours &colours)
{
    const double height = QFontMetricsF(painter.font()).height();
    painter.setBrush(depthColour(std::numeric_limits<double>::quiet_NaN()));
    painter.setPen(QPen(colours.coast, 0.8));
    painter.drawRect(QRectF(at.x(), at.y() + (height - barWidth) / 2, barWidth, barWidth));
    painter.setPen(colours.text);
    painter.drawText(QRectF(at.x() + barWidth + 8, at.y(), 200, height), Qt::AlignVCenter,
                     OvEventMap::tr("unknown"));
}

void Legend::draw(QPainter &painter, QPointF corner, const MapColours &colours) const
{
    if (form == LegendForm::None)
        return;
    const Scale &scale = scaleOf(form);
    const QFontMetricsF metrics(painter.font());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = colours.page;
    ground.setAlpha(225);
    painter.setPen(QPen(colours.graticule, 1));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(corner, size(metrics)), 4, 4);

    QPointF at = corner + QPointF(padding, padding);
    painter.setPen(colours.text);
    painter.drawText(at + QPointF(0, metrics.ascent()), OvEventMap::tr("Magnitude"));
    at.setY(drawSizes(painter, at + QPointF(0, metrics.height() * 1.25), scale, colours) + padding);
    painter.setPen(colours.text);
    painter.drawText(at + QPointF(0, metrics.ascent()), OvEventMap::tr("Depth (km)"));
    at.ry() += metrics.height() * 1.5;
    drawDepths(painter, at, scale, colours);
    if (unknownDepths)
        drawUnknown(painter, at + QPointF(0, scale.barHeight + metrics.height() * 0.5), colours);
    painter.restore();
}
