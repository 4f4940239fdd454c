#include <orvane/plot.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include "event_style.h"
#include "small_database.h"

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
    const QPointF centre = map.positionOf(40, -100);
    map.setDefaults(0);
    EXPECT_EQ(map.positionOf(0, 0), centre);
    EXPECT_FALSE(OvEventView().configure("latr", "40"));
}

TEST(EventMap, KeepsDistancesFromItsCentre)
{
    OvEventMap map(nullptr, true, false);
    map.resize(500, 500);
    map.configure("range", "90");
    const QPointF centre = map.positionOf(0, 0), pole = map.positionOf(90, 0), half = map.positionOf(0, 45);
    EXPECT_NEAR(pole.x(), centre.x(), 1e-6);
    EXPECT_LT(pole.y(), centre.y());
    EXPECT_NEAR((half.x() - centre.x()) / (centre.y() - pole.y()), 0.5, 0.001);
}

TEST(EventMap, SaysWhyADatabaseIsNotThere)
{
    OvEventMap map(nullptr, true, true);
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("No events")));
    showEvents(map, QStringLiteral("/nowhere/none"));
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("/nowhere/none"))) << map.statusText().toStdString();
    map.resize(300, 300);
    EXPECT_FALSE(map.grab().isNull());
}

TEST(EventMap, SaysWhatItCannotDraw)
{
    const SmallDatabase database(originLine(10, 20, 30, 1, 6.5) + originLine(-999, -999, 5, 2, 4) +
                                 originLine(95, 20, 5, 3, 4) + originLine(-10, -20, -999, 5, -999));
    OvEventMap map(nullptr, true, true);
    map.configure("range", "25");
    showEvents(map, database.path());
    const QStringList said = map.statusText().split(QStringLiteral(" \u00b7 "));
    EXPECT_EQ(said,
              QStringList({QStringLiteral("Events: 2"), QStringLiteral("of unknown magnitude (smallest): 1"),
                           QStringLiteral("without coordinates: 1"),
                           QStringLiteral("with impossible coordinates: 1")}))
        << map.statusText().toStdString();
    map.configure("range", "23");
    map.complete();
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("Events: 2")));
    map.configure("range", "22.4");
    map.complete();
    EXPECT_TRUE(map.statusText().startsWith(QStringLiteral("Events: 1 \u00b7 beyond the map's range: 1")) ||
                map.statusText().startsWith(QStringLiteral("Events: 2")));
    map.configure("range", "10");
    map.complete();
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("beyond the map's range: 2")))
        << map.statusText().toStdString();
}

TEST(EventMap, DrawsAnEventAtItsPlaceInItsColour)
{
    const SmallDatabase database(originLine(10, -60, 0, 1, 6));
    for (const double ratio : {1.0, 1.5, 2.0}) {
        OvEventMap map(nullptr, true, false);
        map.resize(500, 500);
        map.configure("latr", "40");
        map.configure("lonr", "-100");
        map.configure("range", "120");
        const QPoint place = (map.positionOf(10, -60) * ratio).toPoint();
        const QImage before = map.picture({500, 500}, ratio);
        EXPECT_EQ(before.size(), QSize(500, 500) * ratio);
        showEvents(map, database.path());
        const QImage after = map.picture({500, 500}, ratio);
        EXPECT_NE(before.pixelColor(place), depthColour(0));
        EXPECT_EQ(after.pixelColor(place), depthColour(0)) << ratio;
        EXPECT_TRUE(map.statusText().contains(QStringLiteral("Events: 1")));
    }
}

// The widget shows what the picture shows, once it has had its turns of the event loop.
TEST(EventMap, BecomesCompleteInTheEventLoop)
{
    const SmallDatabase database(originLine(0, 0, 0, 1, 6));
    OvEventMap map(nullptr, true, false);
    map.resize(400, 300);
    auto *view = new OvEventView;
    view->configure(QStringLiteral("dbname"), database.path());
    map.attach(view);
    EXPECT_FALSE(map.isComplete());
    map.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return map.isComplete(); }, 30'000));
    const QImage shown = map.grab().toImage().convertToFormat(QImage::Format_RGB32);
    QImage picture = map.picture({400, 300});
    EXPECT_EQ(shown.pixelColor(map.positionOf(0, 0).toPoint()), depthColour(0));
    picture.setDevicePixelRatio(shown.devicePixelRatio());
    EXPECT_EQ(shown, picture);
}

TEST(EventMap, ShowsEventsThatAreAddedToItsTable)
{
    SmallDatabase database(originLine(0, 0, 0, 1, 6));
    OvEventMap map(nullptr, true, true);
    map.resize(400, 300);
    map.show();
    showEvents(map, database.path());
    QTest::qWait(20);
    database.append(originLine(30, 30, 0, 2, 6));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return map.isComplete() && map.statusText().contains(QStringLiteral("Events: 2")); }, 10'000));
    EXPECT_EQ(map.picture({400, 300}).pixelColor(map.positionOf(30, 30).toPoint()), depthColour(0));
}

TEST(EventMap, FollowsThePalette)
{
    OvEventMap map(nullptr, false, true);
    const QImage light = map.picture({400, 300});
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(25, 25, 25));
    dark.setColor(QPalette::Text, Qt::white);
    map.setPalette(dark);
    const QImage picture = map.picture({400, 300});
    EXPECT_EQ(picture.pixelColor(2, 2), QColor(25, 25, 25));
    EXPECT_EQ(light.pixelColor(2, 2), QPalette().color(QPalette::Base));
}

TEST(EventMap, FillsAPageThatHasNoLayout)
{
    QWidget page;
    auto *map = new OvEventMap(&page, true, true);
    page.resize(640, 480);
    page.grab();
    EXPECT_EQ(map->size(), page.size());

    QWidget other;
    auto *layout = new QVBoxLayout(&other);
    new OvEventMap(&other, true, true);
    EXPECT_EQ(layout->count(), 0);
}

TEST(EventMap, DrawsInWindowsOfAnySize)
{
    const SmallDatabase database(originLine(0, 0, 0, 1, 6));
    OvEventMap map(nullptr, true, true);
    showEvents(map, database.path());
    for (const QSize size :
         {QSize(1, 1), QSize(120, 120), QSize(2000, 130), QSize(130, 1500), QSize(1600, 1200)})
        EXPECT_EQ(map.picture(size).size(), size);
}

TEST(EventMap, DrawsThePolesAndTheFarSide)
{
    for (const char *latitude : {"90", "-90", "0", "-40"})
        for (const char *longitude : {"360", "-180"})
            for (const char *range : {"180", "90", "1", "0.01"}) {
                OvEventMap map(nullptr, true, false);
                map.configure("latr", latitude);
                map.configure("lonr", longitude);
                map.configure("range", range);
                map.resize(160, 140);
                const QImage picture = map.picture({160, 140});
                const QPoint centre =
                    map.positionOf(QByteArray(latitude).toDouble(), QByteArray(longitude).toDouble())
                        .toPoint();
                const QColor page = map.palette().color(QPalette::Base);
                EXPECT_NE(picture.pixelColor(centre + QPoint(7, 9)), page)
                    << latitude << ' ' << longitude << ' ' << range;
                EXPECT_EQ(picture.pixelColor(2, 2), page);
            }
}

TEST(EventMap, MayGoWhileItReadsAndPlaces)
{
    QByteArray lines;
    for (int i = 0; i < 20'000; ++i)
        lines += originLine(i % 90, i % 180, 10, i + 1, 4);
    const SmallDatabase database(lines);
    for (int turns = 0; turns < 12; ++turns) {
        OvEventMap map(nullptr, true, true);
        map.resize(200, 200);
        map.show();
        auto *view = new OvEventView;
        view->configure(QStringLiteral("dbname"), database.path());
        map.attach(view);
        for (int i = 0; i < turns; ++i)
            QCoreApplication::processEvents();
        if (turns == 6)
            map.attach(nullptr);
    }
    SUCCEED(); // under the sanitizers nothing that is gone was used
}
