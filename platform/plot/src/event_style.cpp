#include "event_style.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QPainter>

static constexpr int sizeSteps = 64, colourSteps = 64;

double eventRadius(double magnitude)
{
    if (std::isnan(magnitude))
        return smallestRadius;
    const double size = std::clamp(magnitude, 0.0, 9.0) / 9;
    return smallestRadius + (largestRadius - smallestRadius) * size * size;
}

double depthFraction(double depth)
{
    return std::sqrt(std::clamp(depth, 0.0, deepest) / deepest);
}

QColor depthColour(double depth)
{
    if (std::isnan(depth))
        return {140, 140, 140};
    // Samples of the colour map "plasma" of matplotlib (CC0) at equal steps, from its orange down to its
    // blue.
    static constexpr std::array<std::array<int, 3>, 8> samples{{{253, 174, 50},
                                                                {246, 135, 76},
                                                                {228, 99, 106},
                                                                {204, 71, 120},
                                                                {170, 35, 149},
                                                                {126, 3, 168},
                                                                {76, 2, 161},
                                                                {13, 8, 135}}};
    const double place = depthFraction(depth) * (samples.size() - 1);
    const auto lower = std::min(static_cast<std::size_t>(place), samples.size() - 2);
    const double part = place - static_cast<double>(lower);
    auto mixed = [&](std::size_t channel) {
        return static_cast<int>(
            std::lround(samples[lower][channel] * (1 - part) + samples[lower + 1][channel] * part));
    };
    return {mixed(0), mixed(1), mixed(2)};
}

EventSymbols::EventSymbols(double devicePixelRatio, QColor outline, QColor ring, QColor halo)
    : m_ratio(devicePixelRatio), m_outline(std::move(outline)), m_ring(std::move(ring)),
      m_halo(std::move(halo)), m_images(static_cast<std::size_t>(sizeSteps * (colourSteps + 1)))
{
}

QImage EventSymbols::drawn(double radius, const QColor &fill) const
{
    const int side =
        2 * static_cast<int>(std::ceil((radius + margin()) * m_ratio)) + 1; // odd: the centre is a pixel's
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(side / 2.0, side / 2.0);
    painter.scale(m_ratio, m_ratio);
    painter.setBrush(Qt::NoBrush);
    if (m_ring.isValid()) {
        for (const auto &[colour, width] : {std::pair(m_halo, 4.6), std::pair(m_ring, 2.2)}) {
            painter.setPen(QPen(colour, width));
            painter.drawEllipse(QPointF(), radius + 2, radius + 2);
        }
    }
    painter.setBrush(fill);
    painter.setPen(QPen(m_outline, 0.7));
    painter.drawEllipse(QPointF(), radius, radius);
    return image;
}

const QImage &EventSymbols::symbol(double magnitude, double depth) const
{
    const double radius = eventRadius(magnitude);
    const int size = static_cast<int>(
        std::lround((radius - smallestRadius) / (largestRadius - smallestRadius) * (sizeSteps - 1)));
    const bool known = !std::isnan(depth);
    const int colour =
        known ? static_cast<int>(std::lround(depthFraction(depth) * (colourSteps - 1))) : colourSteps;
    QImage &image = m_images[static_cast<std::size_t>(size * (colourSteps + 1) + colour)];
    if (image.isNull()) {
        const double fraction = static_cast<double>(colour) / (colourSteps - 1);
        image = drawn(smallestRadius + (largestRadius - smallestRadius) * size / (sizeSteps - 1),
                      depthColour(known ? deepest * fraction * fraction : depth));
    }
    return image;
}
