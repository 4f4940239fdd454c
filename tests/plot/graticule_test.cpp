#include "graticule.h"

#include <cmath>

#include <gtest/gtest.h>

TEST(Graticule, ShowsSomeLinesAtEveryScale)
{
    EXPECT_EQ(graticuleSteps(360, 40).parallels, 30);
    EXPECT_EQ(graticuleSteps(90, 0).parallels, 15);
    EXPECT_EQ(graticuleSteps(10, 0), (GraticuleSteps{2, 2}));
    EXPECT_EQ(graticuleSteps(10, 61), (GraticuleSteps{2, 5}));
    EXPECT_EQ(graticuleSteps(0.001, 10), (GraticuleSteps{0.01, 0.01}));
    for (const double pole : {90.0, -90.0, 89.9999})
        EXPECT_EQ(graticuleSteps(0.02, pole).meridians, 30);
}

// Wherever a part of the map lies, its lines are those of the whole.
TEST(Graticule, IsTheSameInEveryPart)
{
    for (const auto &[latitude, longitude] : {std::pair(40.0, -100.0), {90.0, 0.0}, {-15.0, 180.0}}) {
        const Projection projection(latitude, longitude);
        const MapFrame whole{{0, 0}, 10, {2400, 2400}};
        const GraticuleSteps steps{30, 30};
        // Where each meridian crosses the parallels, the lines of the part around must pass.
        for (double lat = -60; lat <= 60; lat += 30)
            for (double lon = -180; lon < 180; lon += 30) {
                const QPointF crossing = projection.forward(lat, lon);
                if (std::hypot(crossing.x(), crossing.y()) > 115)
                    continue;
                const MapFrame part{crossing + QPointF(3, 2), 10, {128, 128}};
                const QPainterPath lines = graticuleLines(projection, 120, steps, part);
                const QRectF around(part.toPixel(crossing) - QPointF(2, 2), QSizeF(4, 4));
                bool crossed = false;
                for (const QPolygonF &line : lines.toSubpathPolygons())
                    for (int i = 0; i + 1 < line.size(); ++i)
                        crossed |= QPainterPath([&] {
                                       QPainterPath path(line[i]);
                                       path.lineTo(line[i + 1]);
                                       return path;
                                   }())
                                       .intersects(around);
                EXPECT_TRUE(crossed) << latitude << ' ' << longitude << ": " << lat << ' ' << lon;
            }
        EXPECT_FALSE(graticuleLines(projection, 120, steps, whole).isEmpty());
    }
}

TEST(Graticule, DrawsNoMoreThanThePartNeeds)
{
    const Projection projection(40, -100);
    const MapFrame part{projection.forward(37, -120), 20'000, {256, 256}};
    EXPECT_LT(graticuleLines(projection, 120, {0.01, 0.01}, part).elementCount(), 500);
    const MapFrame pole{projection.forward(90, 0), 20'000, {256, 256}};
    EXPECT_LT(graticuleLines(projection, 120, {0.01, 30}, pole).elementCount(), 20'000);
}

TEST(Graticule, LabelsLinesWhereAWayCrossesThem)
{
    const Projection projection(0, 175);
    std::vector<QPointF> way;
    for (int i = 0; i <= 100; ++i)
        way.push_back(projection.forward(-0.5, 165 + i * 0.19)); // 165 E to 176 W
    QStringList texts;
    for (const GraticuleLabel &label : labelsAlong(way, projection, {5, 5}, Lines::Both)) {
        texts << label.text;
        EXPECT_NEAR(label.at.y(), projection.forward(-0.5, 175).y(), 0.1);
    }
    EXPECT_EQ(texts, QStringList({QStringLiteral("170\u00b0E"), QStringLiteral("175\u00b0E"),
                                  QStringLiteral("180\u00b0")}))
        << texts.join(' ').toStdString();
    way.clear();
    for (int i = 0; i <= 100; ++i)
        way.push_back(projection.forward(-1 + i * 0.02, 175.1));
    texts.clear();
    for (const GraticuleLabel &label : labelsAlong(way, projection, {0.5, 0.5}, Lines::Both))
        texts << label.text;
    EXPECT_EQ(texts, QStringList({QStringLiteral("0.5\u00b0S"), QStringLiteral("0\u00b0"),
                                  QStringLiteral("0.5\u00b0N")}))
        << texts.join(' ').toStdString();
}
