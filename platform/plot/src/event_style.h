// How an event looks: its size by magnitude, its colour by depth.
#pragma once

#include <vector>

#include <QColor>
#include <QImage>

// The radius of an event's disc in logical pixels. The symbol's area grows with the magnitude; an unknown
// magnitude (not a number) has the smallest.
double eventRadius(double magnitude);
inline constexpr double smallestRadius = 2, largestRadius = 18;

// From orange (shallow) to dark blue (deep), even in lightness; grey for an unknown depth (not a number).
QColor depthColour(double depth);
inline constexpr double deepest = 700; // km

// Where a depth stands on the colour scale, 0 to 1: by its square root, as most events are shallow.
double depthFraction(double depth);

// The discs, drawn once for a device pixel ratio and their lines' colours.
class EventSymbols
{
public:
    // `ring` is drawn around the disc on a ground of `halo`; an invalid colour for none.
    EventSymbols(double devicePixelRatio, QColor outline, QColor ring = {}, QColor halo = {});

    // In device pixels, the disc's middle in its own.
    const QImage &symbol(double magnitude, double depth) const;

    // How far a symbol reaches from its middle at most, in logical pixels.
    double reach() const { return largestRadius + margin(); }
    double devicePixelRatio() const { return m_ratio; }

private:
    double margin() const { return m_ring.isValid() ? 5 : 1; }
    QImage drawn(double radius, const QColor &fill) const;

    double m_ratio;
    QColor m_outline, m_ring, m_halo;
    mutable std::vector<QImage> m_images; // made when first needed
};
