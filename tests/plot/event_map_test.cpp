#include <orvane/plot.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>

#include "coastline.h"
#include "event_catalogue.h"
#include "event_layer.h"
#include "event_style.h"

static const QString demo = QStringLiteral(ORVANE_SOURCE_DIR "/demo/quakes");

// A record of the origin table with this place, depth, id and mb.
static QByteArray originLine(double latitude, double longitude, double depth, int orid, double mb)
{
    return QString::asprintf(
               "%9.4f %9.4f %9.4f %17.5f %8d %8d %8d %4d %4d %4d %8d %8d %-7s %9.4f %-1s %7.2f %8d %7.2f "
               "%8d %7.2f %8d %-15s %-15s %8d %17.5f\n",
               latitude, longitude, depth, 1517363399.65, orid, orid, 2018031, -1, -1, -1, -1, -1, "qt",
               -999.0, "-", mb, -1, -999.0, -1, -999.0, -1, "-", "-", -1, 1517942380.2)
        .toUtf8();
}

static QString makeDatabase(const QTemporaryDir &folder, const QByteArray &origins)
{
    const QString path = folder.filePath(QStringLiteral("small"));
    QFile descriptor(path), table(path + QStringLiteral(".origin"));
    EXPECT_TRUE(descriptor.open(QIODevice::WriteOnly) && table.open(QIODevice::WriteOnly));
    descriptor.write("schema: css3.0\ndbpath: [.]\nlocks: local\n");
    table.write(origins);
    return path;
}

static OvEventView *viewOf(const QString &path)
{
    auto *view = new OvEventView;
    EXPECT_TRUE(view->configure(QStringLiteral("dbname"), path));
    return view;
}

TEST(EventCatalogue, HoldsEveryOriginOfTheDemo)
{
    const EventCatalogue catalogue = readEvents(demo);
    EXPECT_EQ(catalogue.error.toStdString(), "");
    EXPECT_EQ(catalogue.records(), 1707);
    EXPECT_EQ(catalogue.events.size(), 1707U);
    EXPECT_EQ(catalogue.withoutCoordinates + catalogue.impossibleCoordinates + catalogue.unreadable, 0);
}

TEST(EventCatalogue, CountsNullAndImpossibleCoordinatesAndKeepsTheRest)
{
    const QTemporaryDir folder;
    const auto path =
        makeDatabase(folder, originLine(10, 20, 30, 1, 6.5) + originLine(-999, -999, 5, 2, 4) +
                                 originLine(95, 20, 5, 3, 4) + originLine(10, 200, 5, 4, 4) +
                                 originLine(-10, -20, -999, 5, -999) + originLine(0, -999, 5, 6, 4));
    const EventCatalogue catalogue = readEvents(path);
    EXPECT_EQ(catalogue.error.toStdString(), "");
    EXPECT_EQ(catalogue.withoutCoordinates, 2);
    EXPECT_EQ(catalogue.impossibleCoordinates, 2);
    ASSERT_EQ(catalogue.events.size(), 2U);
    EXPECT_EQ(catalogue.events[0].origin, 5); // of unknown magnitude, so first
    EXPECT_TRUE(std::isnan(catalogue.events[0].magnitude));
    EXPECT_TRUE(std::isnan(catalogue.events[0].depth));
    EXPECT_EQ(catalogue.events[1].origin, 1);
    EXPECT_FLOAT_EQ(catalogue.events[1].magnitude, 6.5F);
    EXPECT_FLOAT_EQ(catalogue.events[1].depth, 30);
}

TEST(Coastline, IsThereAndClosed)
{
    ASSERT_GT(coastlineRings().size(), 100U);
    for (const Ring &ring : coastlineRings()) {
        EXPECT_EQ(ring.front().longitude, ring.back().longitude);
        EXPECT_EQ(ring.front().latitude, ring.back().latitude);
        for (const GeoPoint point : ring)
            EXPECT_TRUE(std::abs(point.latitude) <= 90 && std::abs(point.longitude) <= 180);
    }
}

TEST(Coastline, TellsLandFromSeaWhereverTheMapIsCentred)
{
    for (const auto &[latitude, longitude] :
         {std::pair(0.0, 0.0), {40.0, -100.0}, {-35.0, 150.0}, {90.0, 0.0}, {-50.0, -60.0}, {-30.0, 80.0}}) {
        const Projection projection(latitude, longitude);
        const ProjectedLand land = projectLand(coastlineRings(), projection, 180);
        auto isLand = [&](double lat, double lon) {
            return land.area.contains(projection.forward(lat, lon));
        };
        EXPECT_TRUE(isLand(50, 20)) << latitude << ' ' << longitude;   // Poland
        EXPECT_TRUE(isLand(40, -100)) << latitude << ' ' << longitude; // Kansas
        EXPECT_TRUE(isLand(-25, 135)) << latitude << ' ' << longitude; // Australia
        EXPECT_TRUE(isLand(-85, 60)) << latitude << ' ' << longitude;  // Antarctica
        EXPECT_TRUE(isLand(67, 179)) << latitude << ' ' << longitude;  // Chukotka
        EXPECT_FALSE(isLand(0, -150)) << latitude << ' ' << longitude;
        EXPECT_FALSE(isLand(30, -45)) << latitude << ' ' << longitude;
        EXPECT_FALSE(isLand(-40, 80)) << latitude << ' ' << longitude;
        EXPECT_FALSE(isLand(85, 0)) << latitude << ' ' << longitude;
    }
}

TEST(Coastline, LeavesOutWhatIsBeyondTheRange)
{
    const Projection projection(0, -150); // the open Pacific
    EXPECT_TRUE(projectLand(coastlineRings(), projection, 5).coast.isEmpty());
    const QRectF part = projectLand(coastlineRings(), Projection(40, -100), 20).coast.boundingRect();
    EXPECT_LT(part.width(), 60);
}

TEST(EventMap, RefusesUnknownKeysAndBadValuesAndStaysAsItWas)
{
    OvEventMap map(nullptr, true, false);
    map.resize(400, 400);
    EXPECT_TRUE(map.configure("latr", "40"));
    EXPECT_TRUE(map.configure("lonr", "-100"));
    EXPECT_TRUE(map.configure(QStringLiteral("range"), QStringLiteral("120")));
    const QPointF place = map.positionOf(0, 0);
    for (const auto &[key, value] :
         std::initializer_list<std::pair<const char *, const char *>>{{"colour", "1"},
                                                                      {"latr", "91"},
                                                                      {"latr", "north"},
                                                                      {"lonr", "400"},
                                                                      {"range", "0"},
                                                                      {"range", "-5"},
                                                                      {"range", "181"},
                                                                      {"range", ""},
                                                                      {"latr", "nan"},
                                                                      {"range", "inf"},
                                                                      {"", ""}})
        EXPECT_FALSE(map.configure(key, value)) << key << '=' << value;
    EXPECT_EQ(map.positionOf(0, 0), place);
    map.setDefaults(0);
    EXPECT_EQ(map.positionOf(0, 0), QPointF(200, 200));
    EXPECT_FALSE(OvEventView().configure("latr", "40"));
}

TEST(EventMap, SaysWhyADatabaseIsNotThere)
{
    OvEventMap map(nullptr, true, true);
    map.attach(viewOf(QStringLiteral("/nowhere/none")));
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("/nowhere/none"))) << map.statusText().toStdString();
    map.resize(300, 300);
    EXPECT_FALSE(map.grab().isNull());
}

TEST(EventMap, DrawsAnEventAtItsPlaceInItsColour)
{
    const QTemporaryDir folder;
    OvEventMap map(nullptr, true, false);
    map.resize(500, 500);
    map.configure("latr", "40");
    map.configure("lonr", "-100");
    map.configure("range", "120");
    const QPoint place = map.positionOf(10, -60).toPoint();
    const QImage before = map.grab().toImage();
    map.attach(viewOf(makeDatabase(folder, originLine(10, -60, 0, 1, 6))));
    const QImage after = map.grab().toImage();
    EXPECT_NE(before.pixelColor(place), depthColour(0));
    EXPECT_EQ(after.pixelColor(place), depthColour(0));
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("1")));
}

TEST(EventMap, FillsAPageThatHasNoLayout)
{
    QWidget page;
    auto *map = new OvEventMap(&page, true, true);
    page.resize(640, 480);
    page.grab();
    EXPECT_EQ(map->size(), page.size());
}

TEST(EventLayer, NeverHidesALargerEventAmongAMillion)
{
    std::vector<Event> events;
    std::uint64_t state = 1;
    auto next = [&state](double lowest, double highest) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return lowest + (highest - lowest) * static_cast<double>(state >> 11) / 9007199254740992.0;
    };
    for (int i = 0; i < 1'000'000; ++i)
        events.push_back({next(-60, 60), next(-150, 150), 0, i, 300, 1.0F});
    events.push_back({5, 5, 0, 1'000'000, 0, 8.0F}); // the largest, drawn last
    const Projection projection(0, 0);
    const EventLayer layer(events, projection, 180);
    EXPECT_EQ(layer.size(), events.size());
    const MapFrame frame{{0, 0}, 2, {720, 720}};
    QImage image(720, 720, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    layer.draw(painter, frame, EventSymbols(1, Qt::black));
    painter.end();
    const QPointF place = frame.toPixel(projection.forward(5, 5));
    EXPECT_EQ(image.pixelColor(place.toPoint()), depthColour(0));
    EXPECT_EQ(layer.eventAt(place, frame)->origin, 1'000'000);
    int covered = 0;
    for (int x = 260; x < 460; ++x)
        covered += image.pixelColor(x, 400) != QColor(Qt::white);
    EXPECT_GT(covered, 150);
}
