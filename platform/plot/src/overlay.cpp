#include "overlay.h"

#include <algorithm>
#include <cmath>

#include <QLocale>
#include <QPainterPath>

#include <orvane/plot.h>

#include "graticule.h"

static constexpr double radians = 3.14159265358979323846 / 180;
static constexpr double kilometresPerDegree = 111.1329525;

namespace {

// Writes labels that leave each other room.
class LabelWriter
{
public:
    LabelWriter(QPainter &painter, const MapColours &colours,
                const std::function<bool(const QRectF &)> &isTaken)
        : m_painter(painter), m_colours(colours), m_metrics(painter.font()), m_isTaken(isTaken)
    {
    }

    void write(QPointF middle, const QString &text)
    {
        const QSizeF size(m_metrics.horizontalAdvance(text), m_metrics.height());
        const QRectF place(middle - QPointF(size.width() / 2, size.height() / 2), size);
        const QRectF room = place.adjusted(-4, -1, 4, 1);
        for (const QRectF &other : m_taken)
            if (other.intersects(room))
                return;
        if (m_isTaken(room))
            return;
        m_taken.push_back(room);
        QPainterPath path;
        path.addText(place.left(), place.top() + m_metrics.ascent(), m_painter.font(), text);
        QColor halo = m_colours.page;
        halo.setAlpha(200);
        m_painter.strokePath(path, QPen(halo, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.fillPath(path, m_colours.faintText);
    }

    QSizeF sizeOf(const QString &text) const
    {
        return {m_metrics.horizontalAdvance(text), m_metrics.height()};
    }

private:
    QPainter &m_painter;
    const MapColours &m_colours;
    QFontMetricsF m_metrics;
    const std::function<bool(const QRectF &)> &m_isTaken;
    std::vector<QRectF> m_taken; // by labels
};

} // namespace

// Points of the plane from a to b, without those beyond the range.
static std::vector<QPointF> within(QPointF a, QPointF b, double range)
{
    constexpr int steps = 96;
    std::vector<QPointF> way;
    for (int i = 0; i <= steps; ++i) {
        const QPointF point = a + (b - a) * i / steps;
        if (std::hypot(point.x(), point.y()) <= std::min(range, 178.0))
            way.push_back(point);
    }
    return way;
}

static void labelRim(LabelWriter &writer, const MapFrame &frame, const Projection &projection, double range,
                     const GraticuleSteps &steps)
{
    std::vector<QPointF> rim;
    for (int i = 0; i <= 720; ++i)
        rim.push_back(range * QPointF(std::sin(i * radians / 2), std::cos(i * radians / 2)));
    const QRectF page({0, 0}, frame.size);
    for (const GraticuleLabel &label : labelsAlong(rim, projection, steps, Lines::Both)) {
        const QPointF outwards =
            QPointF(label.at.x(), -label.at.y()) / std::hypot(label.at.x(), label.at.y());
        const QSizeF size = writer.sizeOf(label.text);
        const QPointF at =
            frame.toPixel(label.at) + outwards * (5 + std::abs(outwards.x()) * size.width() / 2 +
                                                  std::abs(outwards.y()) * size.height() / 2);
        const QRectF place(at - QPointF(size.width() / 2, size.height() / 2), size);
        if (page.contains(place))
            writer.write(at, label.text);
    }
}

void drawGraticuleLabels(QPainter &painter, const MapFrame &frame, const Projection &projection, double range,
                         const GraticuleSteps &steps, const MapColours &colours,
                         const std::function<bool(const QRectF &)> &isTaken)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    LabelWriter writer(painter, colours, isTaken);
    const double radius = range * frame.scale;
    const QPointF middle = frame.toPixel(QPointF(0, 0));
    const bool wholeWorld = range > 150; // the rim is then the surroundings of one point
    if (!wholeWorld)
        labelRim(writer, frame, projection, range, steps);
    const double width = frame.size.width(), height = frame.size.height();
    const double inset = writer.sizeOf(QStringLiteral("00.00")).width() / 2 + 6;
    const bool cutLeft = middle.x() - radius<0, cutBelow = middle.y() + radius> height;
    // Along the window's edges where they cut the map; else, without a rim to write on, through its middle.
    if (cutLeft || wholeWorld) {
        const double x = cutLeft ? inset : middle.x();
        for (const auto &label :
             labelsAlong(within(frame.toPlane(QPointF(x, 0)), frame.toPlane(QPointF(x, height)), range),
                         projection, steps, Lines::Parallels))
            writer.write(frame.toPixel(label.at), label.text);
    }
    if (cutBelow || wholeWorld) {
        const double y = cutBelow ? height - 12 : middle.y();
        for (const auto &label :
             labelsAlong(within(frame.toPlane(QPointF(0, y)), frame.toPlane(QPointF(width, y)), range),
                         projection, steps, Lines::Meridians))
            writer.write(frame.toPixel(label.at), label.text);
    }
    painter.restore();
}

QRectF drawDistanceScale(QPainter &painter, const MapFrame &frame, QPointF corner, const MapColours &colours)
{
    const double longest =
        std::clamp(frame.size.width() / 4, 30.0, 140.0) / frame.scale * kilometresPerDegree;
    const double power = std::pow(10, std::floor(std::log10(longest)));
    const double length = longest >= 5 * power ? 5 * power : longest >= 2 * power ? 2 * power : power;
    const double width = length / kilometresPerDegree * frame.scale;
    const QString text = OvEventMap::tr("%1 km").arg(QLocale().toString(length, 'g', 6));
    const QFontMetricsF metrics(painter.font());
    const double space = std::max(width, metrics.horizontalAdvance(text)) + 12;
    const QRectF place(corner.x() - space, corner.y() - metrics.height() - 12, space, metrics.height() + 12);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = colours.page;
    ground.setAlpha(200);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(place, 3, 3);
    painter.setPen(colours.text);
    painter.drawText(place.adjusted(0, 2, 0, -8), Qt::AlignCenter, text);
    painter.setPen(QPen(colours.text, 1.2, Qt::SolidLine, Qt::FlatCap));
    const double left = place.center().x() - width / 2, bottom = place.bottom() - 5;
    const QPointF bar[] = {
        {left, bottom - 4}, {left, bottom}, {left + width, bottom}, {left + width, bottom - 4}};
    painter.drawPolyline(bar, 4);
    painter.restore();
    return place;
}

QRectF drawStatus(QPainter &painter, const QRectF &page, const QString &text, std::optional<double> progress,
                  const MapColours &colours)
{
    const int flags = Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap;
    QRectF place = painter.boundingRect(page, flags, text);
    constexpr double barWidth = 140, barHeight = 5;
    if (progress) {
        place.setTop(place.top() - barHeight - 6);
        place.setWidth(std::max(place.width(), barWidth));
    }
    QColor ground = colours.page;
    ground.setAlpha(215);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    const QRectF taken = place.adjusted(-5, -3, 5, 3);
    painter.drawRoundedRect(taken, 3, 3);
    if (progress) {
        const QRectF bar(place.left(), place.top(), barWidth, barHeight);
        painter.setBrush(colours.land);
        painter.drawRoundedRect(bar, 2, 2);
        painter.setBrush(colours.faintText);
        painter.drawRoundedRect(QRectF(bar.topLeft(), QSizeF(barWidth * *progress, barHeight)), 2, 2);
    }
    painter.setPen(colours.text);
    painter.drawText(page, flags, text);
    painter.restore();
    return taken;
}
