#include "cell_ground.h"

#include <algorithm>

#include <QPalette>

namespace {

constexpr qreal middle = 0.5;         // of lightness
constexpr qreal aboveBase = 0.14;     // so much lighter than the base
constexpr qreal mostSaturation = 0.4; // told apart, and quiet

} // namespace

QColor groundIn(const QPalette &palette, const QColor &wanted)
{
    const qreal base = palette.color(QPalette::Active, QPalette::Base).lightnessF();
    if (base >= middle || wanted.lightnessF() < middle) {
        return wanted;
    }
    const QColor hsl = wanted.toHsl();
    return QColor::fromHslF(std::max<qreal>(hsl.hslHueF(), 0), // grey has none
                            std::min(hsl.hslSaturationF(), mostSaturation), base + aboveBase, wanted.alphaF())
        .toRgb();
}

QBrush groundIn(const QPalette &palette, const QBrush &wanted)
{
    return wanted.style() == Qt::SolidPattern ? QBrush(groundIn(palette, wanted.color())) : wanted;
}
