#include "open_database.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTableView>
#include <functional>
#include <gtest/gtest.h>
#include <orvane/util.h>

namespace {

struct RowCount : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();

    // Runs the event loop and asks for the row count, as a view does, until `done` or five seconds have
    // passed.
    bool waitWhileShown(const std::function<bool()> &done)
    {
        QElapsedTimer timer;
        timer.start();
        while (!done() && timer.elapsed() < 5000) {
            site.rowCount();
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return done();
    }
};

TEST_F(RowCount, IsAskedForEachTimeWhileNobodyListens)
{
    EXPECT_EQ(site.rowCount(), 3);
    sites.files.appendRows("site", {{"PFO", "2000001"}});
    EXPECT_EQ(site.rowCount(), 4);
}

TEST_F(RowCount, ChangesForListenersOnlyWithTheSignalOfIt)
{
    QSignalSpy inserted(&site, SIGNAL(rowsInserted(QModelIndex, int, int)));
    QSignalSpy reset(&site, SIGNAL(modelReset()));
    ASSERT_EQ(site.rowCount(), 3);
    sites.files.appendRows("site", {{"PFO", "2000001"}, {"TLY", "2000001"}});
    EXPECT_EQ(site.rowCount(), 3);
    ASSERT_TRUE(waitWhileShown([&] { return inserted.count() > 0; }));
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 3);
    EXPECT_EQ(inserted[0][2].toInt(), 4);
    EXPECT_EQ(site.rowCount(), 5);
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(RowCount, CountsNoRecordThatIsStillBeingWritten)
{
    std::string half = sites.files.record("site", {"PFO", "2000001"});
    std::ofstream(sites.files.tablePath("site"), std::ios::app) << half.substr(0, half.size() / 2);
    EXPECT_EQ(site.rowCount(), 3);
    EXPECT_EQ(site.index(2, 1).data().toString(), "KDAK");
}

TEST_F(RowCount, ThatFallsResetsTheModel)
{
    QTableView view;
    view.setModel(&site);
    QSignalSpy reset(&site, SIGNAL(modelReset()));
    std::filesystem::resize_file(sites.files.tablePath("site"), sites.files.record("site", {}).size() + 1);
    ASSERT_TRUE(waitWhileShown([&] { return reset.count() > 0; }));
    EXPECT_EQ(site.rowCount(), 1);
    EXPECT_EQ(reset.count(), 1);
}

TEST_F(RowCount, OfATableThatVanishesWhileItIsShownFallsToZero)
{
    QTableView view;
    view.setModel(&site);
    view.show();
    QCoreApplication::processEvents();
    std::filesystem::remove(sites.files.tablePath("site"));
    QSignalSpy reset(&site, SIGNAL(modelReset()));
    // Before anybody has noticed, cells are read from what is still open or are invalid; nothing throws.
    for (int row = 0; row < 3; ++row) {
        for (int role : {Qt::DisplayRole, Qt::BackgroundRole, Qt::UserRole})
            EXPECT_NO_THROW(site.data(site.index(row, 1), role));
        EXPECT_NO_THROW(site.headerData(row, Qt::Vertical, Qt::ToolTipRole));
    }
    ASSERT_TRUE(waitWhileShown([&] { return reset.count() > 0; }));
    EXPECT_EQ(site.rowCount(), 0);
    EXPECT_FALSE(site.index(0, 1).isValid());
    view.viewport()->repaint();
    elog_clear();
}

TEST_F(RowCount, OfATableThatIsCutShortLeavesInvalidCellsUntilItIsNoticed)
{
    QSignalSpy inserted(&site, SIGNAL(rowsInserted(QModelIndex, int, int))); // somebody listens
    ASSERT_EQ(site.rowCount(), 3);
    const QModelIndex last = site.index(2, 1);
    std::filesystem::resize_file(sites.files.tablePath("site"), 10);
    QElapsedTimer timer;
    timer.start();
    while (last.data().isValid() && timer.elapsed() < 2000) {
    }
    EXPECT_FALSE(last.data().isValid());
    EXPECT_FALSE(last.data(Qt::UserRole).isValid());
    elog_clear();
}

TEST_F(RowCount, KeepsViewsInStepWhileAnotherProgramAppends)
{
    QTableView view;
    view.setModel(&site);
    view.show();
    QSignalSpy inserted(&site, SIGNAL(rowsInserted(QModelIndex, int, int)));
    for (int round = 1; round <= 3; ++round) {
        sites.files.appendRows("site", {{"NEW", "2000001"}});
        ASSERT_TRUE(waitWhileShown([&] { return inserted.count() >= round; }));
        EXPECT_EQ(site.rowCount(), 3 + round);
        EXPECT_EQ(view.rowAt(view.rowViewportPosition(site.rowCount() - 1)), site.rowCount() - 1);
    }
}

} // namespace
