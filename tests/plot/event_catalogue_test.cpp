#include "event_catalogue.h"

#include <cmath>

#include <gtest/gtest.h>

#include <orvane/util.h>

#include "small_database.h"

static const QString demo = QStringLiteral(ORVANE_SOURCE_DIR "/demo/quakes");

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
    const SmallDatabase database(originLine(10, 20, 30, 1, 6.5) + originLine(-999, -999, 5, 2, 4) +
                                 originLine(95, 20, 5, 3, 4) + originLine(10, 200, 5, 4, 4) +
                                 originLine(-10, -20, -999, 5, -999) + originLine(0, -999, 5, 6, 4) +
                                 originLine(90, -180, 0, 7, 1));
    const EventCatalogue catalogue = readEvents(database.path());
    EXPECT_EQ(catalogue.error.toStdString(), "");
    EXPECT_EQ(catalogue.withoutCoordinates, 2);
    EXPECT_EQ(catalogue.impossibleCoordinates, 2);
    ASSERT_EQ(catalogue.events.size(), 3U);
    EXPECT_EQ(catalogue.events[0].record, 0);
    EXPECT_FLOAT_EQ(catalogue.events[0].magnitude, 6.5F);
    EXPECT_FLOAT_EQ(catalogue.events[0].depth, 30);
    EXPECT_EQ(catalogue.events[1].record, 4);
    EXPECT_TRUE(std::isnan(catalogue.events[1].magnitude));
    EXPECT_TRUE(std::isnan(catalogue.events[1].depth));
    EXPECT_EQ(catalogue.events[2].record, 6);
}

TEST(EventCatalogue, CountsCoordinatesThatAreNoNumbers)
{
    QByteArray broken = originLine(10, 20, 30, 1, 5), strange = originLine(10, 20, 30, 1, 5);
    broken.replace(0, 9, "  1o.0000");
    strange.replace(10, 9, "      nan");
    const SmallDatabase database(broken + originLine(1, 2, 3, 2, 5) + strange);
    const EventCatalogue catalogue = readEvents(database.path());
    EXPECT_EQ(catalogue.records(), 3);
    ASSERT_EQ(catalogue.events.size(), 1U);
    EXPECT_EQ(catalogue.events[0].record, 1);
}

TEST(EventCatalogue, LeavesTheErrorLogToThoseWhoWaitForIt)
{
    elog_clear();
    EXPECT_NE(readEvents(QStringLiteral("/nowhere/none")).error, QString());
    EXPECT_EQ(elog_count(), 0); // what is shown on the map isn't told again
    elog_log("somebody's trouble");
    EXPECT_NE(readEvents(QStringLiteral("/nowhere/none")).error, QString());
    char *log = elog_string(0);
    EXPECT_TRUE(QString::fromUtf8(log).contains(QStringLiteral("somebody's trouble")));
    std::free(log);
    elog_clear();
}
