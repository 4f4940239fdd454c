#include "map_colours.h"

static QColor mix(const QColor &a, const QColor &b, double part)
{
    return QColor::fromRgbF(a.redF() * (1 - part) + b.redF() * part,
                            a.greenF() * (1 - part) + b.greenF() * part,
                            a.blueF() * (1 - part) + b.blueF() * part);
}

MapColours::MapColours(const QPalette &palette)
    : page(palette.color(QPalette::Base)), text(palette.color(QPalette::Text))
{
    const bool dark = page.lightnessF() < 0.5;
    sea = mix(page, dark ? QColor(40, 90, 140) : QColor(150, 190, 225), dark ? 0.18 : 0.28);
    land = mix(page, text, dark ? 0.22 : 0.13);
    coast = mix(page, text, 0.5);
    graticule = text; // over land and sea alike
    graticule.setAlphaF(dark ? 0.2 : 0.15);
    faintText = mix(page, text, 0.7);
    outline = dark ? QColor(245, 245, 245, 200) : QColor(30, 30, 30, 190);
    // No colour of the depth scale, which goes from orange to blue.
    selection = dark ? QColor(60, 255, 110) : QColor(0, 150, 40);
    halo = dark ? QColor(0, 0, 0, 200) : QColor(255, 255, 255, 220);
}
