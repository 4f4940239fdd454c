#include "legend.h"

#include <algorithm>

#include <QCoreApplication>

#include "event_style.h"

static constexpr double barHeight = 150, barWidth = 14, padding = 10;
static constexpr int magnitudes[] = {2, 4, 5, 6, 7, 8};
static constexpr int depths[] = {0, 35, 100, 200, 300, 500, 700}; // km

static QString text(const char *source)
{
    return QCoreApplication::translate("OvEventMap", source);
}

static double columnWidth(const QFontMetricsF &metrics)
{
    return std::max({metrics.horizontalAdvance(text("Magnitude")),
                     metrics.horizontalAdvance(text("Depth (km)")),
                     2 * largestRadius + 12 + metrics.horizontalAdvance(QStringLiteral("000"))});
}

static double sizesHeight()
{
    double height = 0;
    for (const int magnitude : magnitudes)
        height += std::max(2 * eventRadius(magnitude), 14.0) + 4;
    return height;
}

QSizeF legendSize(const QFontMetricsF &metrics)
{
    return {columnWidth(metrics) + 2 * padding,
            2 * metrics.height() + sizesHeight() + barHeight + 4 * padding + metrics.height() / 2};
}

static double drawSizes(QPainter &painter, QPointF at, const MapColours &colours)
{
    double y = at.y();
    for (const int magnitude : magnitudes) {
        const double radius = eventRadius(magnitude), height = std::max(2 * radius, 14.0) + 4;
        const QPointF middle(at.x() + largestRadius, y + height / 2);
        painter.setPen(QPen(colours.outline, 0.7));
        painter.setBrush(depthColour(35));
        painter.drawEllipse(middle, radius, radius);
        painter.setPen(colours.text);
        painter.drawText(QRectF(at.x() + 2 * largestRadius + 12, y, 60, height), Qt::AlignVCenter,
                         QString::number(magnitude));
        y += height;
    }
    return y;
}

static void drawDepths(QPainter &painter, QPointF at, const MapColours &colours)
{
    constexpr int steps = 75;
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < steps; ++i) {
        const double fraction = (i + 0.5) / steps;
        painter.fillRect(QRectF(at.x(), at.y() + barHeight * i / steps, barWidth, barHeight / steps + 0.5),
                         depthColour(deepest * fraction * fraction));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.coast, 0.8));
    painter.drawRect(QRectF(at.x(), at.y(), barWidth, barHeight));
    for (const int depth : depths) {
        const double y = at.y() + barHeight * depthFraction(depth);
        painter.setPen(QPen(colours.coast, 0.8));
        painter.drawLine(QPointF(at.x() + barWidth, y), QPointF(at.x() + barWidth + 4, y));
        painter.setPen(colours.text);
        painter.drawText(QRectF(at.x() + barWidth + 8, y - 10, 60, 20), Qt::AlignVCenter,
                         QString::number(depth));
    }
}

void drawLegend(QPainter &painter, QPointF corner, const MapColours &colours)
{
    const QFontMetricsF metrics(painter.font());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = colours.page;
    ground.setAlpha(225);
    painter.setPen(QPen(colours.graticule, 1));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(corner, legendSize(metrics)), 4, 4);

    QPointF at = corner + QPointF(padding, padding);
    painter.setPen(colours.text);
    painter.drawText(at + QPointF(0, metrics.ascent()), text("Magnitude"));
    at.setY(drawSizes(painter, at + QPointF(0, metrics.height()), colours) + padding);
    painter.setPen(colours.text);
    painter.drawText(at + QPointF(0, metrics.ascent()), text("Depth (km)"));
    drawDepths(painter, at + QPointF(0, metrics.height() * 1.5), colours);
    painter.restore();
}
