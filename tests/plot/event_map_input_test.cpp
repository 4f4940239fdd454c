#include <orvane/plot.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>

#include "small_database.h"

// A map of three events in a window, driven by events such as the toolkit sends.
class EventMapInput : public ::testing::Test
{
protected:
    void SetUp() override
    {
        map.resize(600, 500);
        map.configure("range", "90");
        map.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&map));
        showEvents(map, database.path());
    }

    QPoint at(double latitude, double longitude) const
    {
        return map.positionOf(latitude, longitude).toPoint();
    }

    void wheel(QPointF position, int delta)
    {
        QWheelEvent event(position, map.mapToGlobal(position.toPoint()), QPoint(), QPoint(0, delta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&map, &event);
        EXPECT_TRUE(event.isAccepted());
    }

    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(&map, Qt::LeftButton, modifiers, from);
        for (int i = 1; i <= 5; ++i) {
            const QPoint position = from + (to - from) * i / 5;
            QMouseEvent move(QEvent::MouseMove, position, map.mapToGlobal(position), Qt::NoButton,
                             Qt::LeftButton, modifiers);
            QApplication::sendEvent(&map, &move);
        }
        QTest::mouseRelease(&map, Qt::LeftButton, modifiers, to);
    }

    void click(QPoint position, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(&map, Qt::LeftButton, modifiers, position);
    }

    QString toolTip(QPoint position)
    {
        QHelpEvent event(QEvent::ToolTip, position, map.mapToGlobal(position));
        QApplication::sendEvent(&map, &event);
        return QToolTip::text();
    }

    using Records = QVector<qint64>;
    const SmallDatabase database{originLine(0, 0, 10, 11, 5) + originLine(-999, 0, 10, 12, 5) +
                                 originLine(30, 40, 10, 13, 5) + originLine(-30, -40, 10, 14, 5)};
    OvEventMap map{nullptr, true, true};
    QSignalSpy selected{&map, &OvEventMap::recordsSelected};
};

TEST_F(EventMapInput, TheWheelZoomsUnderThePointer)
{
    const QPointF pointer = map.positionOf(30, 40);
    const QPointF other = map.positionOf(0, 0);
    wheel(pointer, 120);
    EXPECT_NEAR(map.positionOf(30, 40).x(), pointer.x(), 1e-6);
    EXPECT_NEAR(map.positionOf(30, 40).y(), pointer.y(), 1e-6);
    const double before = QLineF(pointer, other).length();
    EXPECT_NEAR(QLineF(map.positionOf(30, 40), map.positionOf(0, 0)).length() / before, 1.25, 1e-6);
    wheel(pointer, -120);
    EXPECT_NEAR(map.positionOf(0, 0).x(), other.x(), 1e-6);
    for (int i = 0; i < 200; ++i)
        wheel(pointer, 120);
    EXPECT_TRUE(QTest::qWaitFor([&] { return map.isComplete(); }, 20'000)); // as near as it goes
    for (int i = 0; i < 400; ++i)
        wheel(pointer, -120);
    EXPECT_TRUE(QTest::qWaitFor([&] { return map.isComplete(); }, 20'000));
    EXPECT_GT(QLineF(map.positionOf(30, 40), map.positionOf(0, 0)).length(), before / 3);
}

TEST_F(EventMapInput, DraggingPansAndSelectsNothing)
{
    const QPointF before = map.positionOf(0, 0);
    drag({100, 100}, {180, 140});
    EXPECT_NEAR(map.positionOf(0, 0).x(), before.x() + 80, 1e-6);
    EXPECT_NEAR(map.positionOf(0, 0).y(), before.y() + 40, 1e-6);
    drag(at(0, 0), at(0, 0) + QPoint(50, 0)); // also when it begins on an event
    EXPECT_EQ(selected.count(), 0);
    QTest::mouseMove(&map, {10, 10}); // no button: nothing
    EXPECT_NEAR(map.positionOf(0, 0).x(), before.x() + 130, 1e-6);
}

TEST_F(EventMapInput, ADoubleClickShowsTheWholeMapOrActivatesAnEvent)
{
    QSignalSpy activated(&map, &OvEventMap::recordActivated);
    const QPointF before = map.positionOf(0, 0);
    wheel({200, 200}, 480);
    drag({100, 100}, {150, 100});
    QTest::mouseDClick(&map, Qt::LeftButton, Qt::NoModifier, {5, 5});
    EXPECT_EQ(map.positionOf(0, 0), before);
    EXPECT_EQ(activated.count(), 0);
    QTest::mouseDClick(&map, Qt::LeftButton, Qt::NoModifier, at(30, 40));
    ASSERT_EQ(activated.count(), 1);
    EXPECT_EQ(activated[0][0].value<qint64>(), 2);
}

TEST_F(EventMapInput, KeysPanZoomAndGoBack)
{
    const QPointF before = map.positionOf(0, 0);
    QTest::keyClick(&map, Qt::Key_Right);
    EXPECT_LT(map.positionOf(0, 0).x(), before.x());
    QTest::keyClick(&map, Qt::Key_Left);
    QTest::keyClick(&map, Qt::Key_Down);
    EXPECT_LT(map.positionOf(0, 0).y(), before.y());
    QTest::keyClick(&map, Qt::Key_Home);
    EXPECT_EQ(map.positionOf(0, 0), before);
    const double width = map.positionOf(0, 40).x() - before.x();
    QTest::keyClick(&map, Qt::Key_Plus);
    EXPECT_NEAR((map.positionOf(0, 40).x() - map.positionOf(0, 0).x()) / width, 1.25, 1e-6);
    QTest::keyClick(&map, Qt::Key_Minus);
    EXPECT_NEAR((map.positionOf(0, 40).x() - map.positionOf(0, 0).x()) / width, 1, 1e-6);
}

TEST_F(EventMapInput, AClickSelectsAndCtrlAddsAndTakesAway)
{
    click(at(0, 0));
    EXPECT_EQ(map.selectedRecords(), Records({0}));
    click(at(30, 40), Qt::ControlModifier);
    EXPECT_EQ(map.selectedRecords(), Records({0, 2}));
    click(at(0, 0), Qt::ControlModifier);
    EXPECT_EQ(map.selectedRecords(), Records({2}));
    click({5, 5}, Qt::ControlModifier); // beside all events
    EXPECT_EQ(map.selectedRecords(), Records({2}));
    EXPECT_EQ(selected.count(), 3);
    click(at(-30, -40));
    EXPECT_EQ(map.selectedRecords(), Records({3}));
    click(at(-30, -40)); // the same is no news
    EXPECT_EQ(selected.count(), 4);
    click({5, 5});
    EXPECT_EQ(map.selectedRecords(), Records());
    ASSERT_EQ(selected.count(), 5);
    EXPECT_EQ(selected[1][0].value<Records>(), Records({0, 2}));
}

TEST_F(EventMapInput, ARubberBandSelects)
{
    const QPoint corner(20, 20);
    drag(at(30, 40) - corner, at(30, 40) + corner, Qt::ShiftModifier);
    EXPECT_EQ(map.selectedRecords(), Records({2}));
    drag(at(0, 0) + corner, at(0, 0) - corner, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(map.selectedRecords(), Records({0, 2}));
    const QPointF centre = map.positionOf(0, 0);
    drag({1, 1}, {3, 3}, Qt::ShiftModifier);
    EXPECT_EQ(map.selectedRecords(), Records());
    EXPECT_EQ(map.positionOf(0, 0), centre); // and pans nothing
}

TEST_F(EventMapInput, KeysSelectAllAndNone)
{
    QTest::keyClick(&map, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(map.selectedRecords(), Records({0, 2, 3})); // record 1 has no place
    QTest::keyClick(&map, Qt::Key_Escape);
    EXPECT_EQ(map.selectedRecords(), Records());
    EXPECT_EQ(selected.count(), 2);
}

TEST_F(EventMapInput, IsToldWhatIsSelectedAndDoesNotAnswer)
{
    const QImage before = map.picture(map.size());
    map.setSelectedRecords({3, 1, 3, 1000});
    EXPECT_EQ(map.selectedRecords(), Records({1, 3, 1000}));
    EXPECT_EQ(selected.count(), 0);
    const QImage after = map.picture(map.size());
    auto sameAround = [&](QPoint place) {
        const QRect around(place - QPoint(12, 12), QSize(25, 25));
        return before.copy(around) == after.copy(around);
    };
    EXPECT_TRUE(sameAround(at(0, 0)));
    EXPECT_FALSE(sameAround(at(-30, -40)));
    EXPECT_TRUE(map.statusText().contains(QStringLiteral("selected: 3")));
}

TEST_F(EventMapInput, PansToARecordThatIsOutOfSight)
{
    const QPointF before = map.positionOf(0, 0);
    map.showRecord(2);
    map.showRecord(1);
    map.showRecord(-1);
    EXPECT_EQ(map.positionOf(0, 0), before); // visible, without a place, none
    wheel(map.positionOf(-30, -40), 1200);
    ASSERT_FALSE(map.rect().contains(at(30, 40)));
    map.showRecord(2);
    EXPECT_TRUE(map.rect().contains(at(30, 40)));
}

TEST_F(EventMapInput, TheToolTipTellsTheFieldsOfTheRecord)
{
    const QString text = toolTip(at(30, 40));
    for (const char *part : {"Record 2", "lat", "30.0000", "lon", "40.0000", "orid", "13", "mb", "5.00",
                             "time", "2018-01-31 01:49:59.650 UTC", "&lt;b&gt;&amp;amp;"})
        EXPECT_TRUE(text.contains(QLatin1String(part))) << part << " in " << text.toStdString();
    EXPECT_FALSE(text.contains(QStringLiteral("commid"))); // null
    toolTip({5, 5});
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }, 5000));
}

TEST_F(EventMapInput, AMapThatIsNotInteractiveLeavesEventsToOthers)
{
    OvEventMap still(nullptr, false, false);
    still.resize(300, 300);
    showEvents(still, database.path());
    const QPointF before = still.positionOf(10, 10);
    QWheelEvent wheel(QPointF(50, 50), QPointF(50, 50), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&still, &wheel);
    EXPECT_FALSE(wheel.isAccepted());
    QTest::mouseClick(&still, Qt::LeftButton, Qt::NoModifier, still.positionOf(0, 0).toPoint());
    QTest::keyClick(&still, Qt::Key_Plus);
    EXPECT_EQ(still.positionOf(10, 10), before);
    EXPECT_TRUE(still.selectedRecords().isEmpty());
}
