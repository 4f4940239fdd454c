#include <orvane/plot.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include <orvane/db.h>

#include "event_view_data.h"
#include "small_database.h"

static std::size_t eventsOf(const OvEventView &view)
{
    return OvEventViewData::catalogue(view)->events.size();
}

// So that the time of a file's modification differs, whatever the file system's clock.
static void letTimePass()
{
    QTest::qWait(20);
}

TEST(EventView, KnowsNoOtherKey)
{
    OvEventView view;
    EXPECT_FALSE(view.configure("latr", "40"));
    EXPECT_FALSE(view.configure("", ""));
    EXPECT_FALSE(view.isReading());
}

TEST(EventView, TakesTheDatabaseFromAParameterFile)
{
    const SmallDatabase database(originLine(1, 2, 3, 1, 4));
    const QByteArray text = "dbname: " + database.path().toUtf8() + "\nother: 1\n";
    Pf *parameters = nullptr;
    ASSERT_EQ(pfparse(text.constData(), static_cast<std::uint64_t>(text.size()), "test", &parameters), 0);
    OvEventView view(parameters);
    pffree(parameters);
    view.finishReading();
    EXPECT_EQ(eventsOf(view), 1U);
}

// Reading a large table leaves the event loop its turns.
TEST(EventView, ReadsALargeTableInSlices)
{
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i)
        lines += originLine(i % 90, i % 180, 10, i + 1, 4);
    const SmallDatabase database(lines);
    OvEventView view;
    QSignalSpy progressed(&view, &OvEventView::progressed), changed(&view, &OvEventView::changed);
    EXPECT_TRUE(view.configure(QStringLiteral("dbname"), database.path()));
    EXPECT_TRUE(view.isReading());
    EXPECT_EQ(view.progress(), 0);
    EXPECT_EQ(eventsOf(view), 0U);
    changed.clear();
    double before = -1;
    QObject::connect(&view, &OvEventView::progressed, [&] {
        EXPECT_GE(view.progress(), before);
        before = view.progress();
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.isReading(); }, 60'000));
    EXPECT_GT(progressed.count(), 2);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(eventsOf(view), 100'000U);
    EXPECT_EQ(view.progress(), 1);
}

TEST(EventView, NoticesThatTheTableGrowsChangesVanishesAndComesBack)
{
    SmallDatabase database(originLine(1, 2, 3, 1, 4));
    OvEventView view;
    view.configure(QStringLiteral("dbname"), database.path());
    view.finishReading();
    ASSERT_EQ(eventsOf(view), 1U);
    auto becomes = [&](auto condition) { return QTest::qWaitFor(condition, 10'000); };

    letTimePass();
    database.append(originLine(5, 6, 7, 2, 5));
    EXPECT_TRUE(becomes([&] { return eventsOf(view) == 2; }));

    letTimePass();
    database.replace(originLine(1, 2, 3, 1, 4) + originLine(-50, 6, 7, 2, 5));
    EXPECT_TRUE(becomes([&] {
        const auto catalogue = OvEventViewData::catalogue(view);
        return catalogue->events.size() == 2 && catalogue->events[1].latitude == -50;
    }));

    database.removeTable();
    EXPECT_TRUE(becomes([&] { return !OvEventViewData::catalogue(view)->error.isEmpty(); }));
    EXPECT_EQ(eventsOf(view), 0U);

    database.replace(originLine(1, 2, 3, 1, 4));
    EXPECT_TRUE(becomes([&] { return eventsOf(view) == 1; }));
    EXPECT_EQ(OvEventViewData::catalogue(view)->error, QString());
}

TEST(EventView, StopsReadingWhenItGoes)
{
    QByteArray lines;
    for (int i = 0; i < 50'000; ++i)
        lines += originLine(0, 0, 10, i + 1, 4);
    const SmallDatabase database(lines);
    auto view = std::make_unique<OvEventView>();
    view->configure(QStringLiteral("dbname"), database.path());
    QCoreApplication::processEvents();
    view.reset();
    QTest::qWait(20);
    SUCCEED(); // under the sanitizers nothing that is gone was used
}

TEST(EventView, TellsTheFieldsOfARecordThatHoldAValue)
{
    const SmallDatabase database(originLine(10, 20, -999, 7, 5.5));
    OvEventView view;
    view.configure(QStringLiteral("dbname"), database.path());
    QStringList lines;
    for (const auto &[name, text] : OvEventViewData::fieldsOf(view, 0))
        lines << name + QLatin1Char('=') + text;
    EXPECT_TRUE(lines.contains(QStringLiteral("lat=10.0000"))) << lines.join(' ').toStdString();
    EXPECT_TRUE(lines.contains(QStringLiteral("orid=7")));
    EXPECT_TRUE(lines.contains(QStringLiteral("mb=5.50")));
    EXPECT_TRUE(lines.contains(QStringLiteral("time=2018-01-31 01:49:59.650 UTC")))
        << lines.join(' ').toStdString();
    EXPECT_FALSE(lines.join(' ').contains(QStringLiteral("depth"))); // null
    EXPECT_TRUE(OvEventViewData::fieldsOf(view, 1).isEmpty());
}

// The map may be closed from the progress of an operation that another connection runs.
TEST(EventView, LetsGoOfItsDatabaseAlsoDuringAnOperation)
{
    QByteArray lines;
    for (int i = 0; i < 200'000; ++i)
        lines += originLine(i % 90, i % 180, 10, i + 1, 4);
    const SmallDatabase database(lines);
    const QByteArray path = database.path().toUtf8();
    Dbptr other{};
    ASSERT_EQ(dbopen_database(path.constData(), "r", &other), 0);
    auto view = std::make_unique<OvEventView>();
    view->configure(QStringLiteral("dbname"), database.path());
    view->finishReading();
    const Dbptr own =
        dblookup(dbinvalid(), path.constData(), nullptr, nullptr, nullptr); // the last one opened
    ASSERT_NE(own.database, other.database);

    dbset_progress_hook(
        [](double, void *held) {
            static_cast<std::unique_ptr<OvEventView> *>(held)->reset();
            return 0;
        },
        &view);
    // An expression that takes long.
    std::string expression = "1 > 2";
    for (int i = 0; i < 400; ++i)
        expression += " || sin(lat + " + std::to_string(i) + ") > 2";
    const Dbptr none =
        dbsubset(dblookup(other, nullptr, "origin", nullptr, nullptr), expression.c_str(), nullptr);
    EXPECT_GE(none.table, 0);
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(view, nullptr);
    std::int64_t tables = 0;
    EXPECT_LT(dbquery(own, dbTABLE_COUNT, &tables), 0) << "its connection is still open";
    elog_clear();
    OVdbclose(other);
}
