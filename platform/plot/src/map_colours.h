// The map's colours.
#pragma once

#include <QColor>
#include <QPalette>

struct MapColours {
    explicit MapColours(const QPalette &palette); // light or dark as the palette is
    bool operator==(const MapColours &) const = default;

    QColor page, sea, land, coast, graticule, text;
    QColor faintText; // of labels, which stand back
    QColor outline;   // of an event
    QColor selection; // the ring around a selected event
    QColor halo;      // between that ring and what lies below
};
