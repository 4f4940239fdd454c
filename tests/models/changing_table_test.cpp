// What models tell of changes that others make: nobody loses his place, and no index gets another record.
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

#include "quake_database.h"

namespace {

class Changing : public testing::Test
{
protected:
    Changing()
    {
        quakes.model = std::make_unique<OrvaneDatabaseModel>(
            quakes.config, QString::fromStdString(quakes.files.path()), "r+");
        view.setModel(&arrival());
        // As the program's own views: they follow the inherited signals. A connection by text finds the
        // model's own signal of that name, which comes at every change.
        for (QObject *listener :
             QList<QObject *>{&view, view.horizontalHeader(), view.verticalHeader(), view.selectionModel()})
            QObject::disconnect(&arrival(), SIGNAL(modelReset()), listener, SLOT(reset()));
    }
    ~Changing() override { elog_clear(); }

    OrvaneTableModel &arrival() { return *quakes.table("arrival"); }
    QString ids(const char *field = "arid")
    {
        return shown(arrival(),
                     arrival().getTableFields().contains(field) ? field : QString("arrival.") + field);
    }
    int column(const QString &field)
    {
        return QStringList(arrival().getTableFields()).indexOf(QRegularExpression("(.*\\.)?" + field)) + 1;
    }
    QString at(const QModelIndex &index) { return index.siblingAtColumn(column("arid")).data().toString(); }

    void select(int row)
    {
        view.setCurrentIndex(arrival().index(row, column("arid")));
        arrival().noteRows(this, {row});
    }
    QString selected()
    {
        QStringList found;
        for (const QModelIndex &index : view.selectionModel()->selectedIndexes())
            found.append(index.data().toString());
        found.sort();
        return found.join(' ');
    }

    // What another program does.
    void replace(const std::vector<TemporaryDatabase::Row> &rows)
    {
        quakes.files.addTable("newer", {});
        std::filesystem::remove(quakes.files.tablePath("newer"));
        std::filesystem::rename(quakes.files.tablePath("arrival"), quakes.files.tablePath("old"));
        quakes.files.addTable("arrival", rows);
    }
    void check() { quakes.model->checkForUpdates(); }

    const TemporaryDatabase::Row kdak{"KDAK", "1517961650.0", "11", "2018038", "P"};
    const TemporaryDatabase::Row aak{"AAK", "1517961660.0", "12", "2018038", "P"};
    const TemporaryDatabase::Row second{"AAK", "1517961690.0", "13", "2018038", "S"};
    const TemporaryDatabase::Row pfo{"PFO", "1517961700.0", "14", "2018038", "P"};

    Quakes quakes;
    QTableView view;
};

TEST_F(Changing, InPlaceLeavesSelectionsAndTellsOfTheCells)
{
    select(2);
    QSignalSpy reset(&arrival(), &QAbstractItemModel::modelReset);
    QSignalSpy changed(&arrival(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    quakes.files.addTable("arrival", {kdak, {"AAK", "1517961660.0", "19", "2018038", "P"}, second, pfo});
    emit arrival().modelReset();
    EXPECT_EQ(ids(), "11 19 13 14");
    EXPECT_EQ(reset.count(), 0);
    EXPECT_GE(changed.count(), 1);
}

TEST_F(Changing, GrowthIsToldAsRowsInserted)
{
    QSignalSpy inserted(&arrival(), SIGNAL(rowsInserted(QModelIndex, int, int)));
    QSignalSpy reset(&arrival(), &QAbstractItemModel::modelReset);
    select(2);
    quakes.files.appendRows("arrival", {{"TLY", "1517961710.0", "15"}});
    arrival().announceChanged(&arrival());
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 4);
    EXPECT_EQ(reset.count(), 0);
    EXPECT_EQ(at(view.currentIndex()), "13");
    EXPECT_EQ(arrival().rowCount(), 5);
}

TEST_F(Changing, OwnCrunchesMoveIndexesWithTheirRecords)
{
    view.setSelectionMode(QAbstractItemView::MultiSelection);
    view.selectionModel()->select(arrival().index(1, column("arid")), QItemSelectionModel::Select);
    view.selectionModel()->select(arrival().index(3, column("arid")), QItemSelectionModel::Select);
    const QPersistentModelIndex gone = arrival().index(0, 1), stays = arrival().index(3, 1);
    OrvaneTableModel &late = *arrival().subset("arid >= 13", "late");
    const QPersistentModelIndex ofView = late.index(1, 1);
    auto *first = static_cast<QDbptr *>(arrival().indexForRow(0).internalPointer());
    first->dbMark();
    arrival().crunch();
    EXPECT_EQ(ids(), "12 13 14");
    EXPECT_FALSE(gone.isValid());
    EXPECT_EQ(at(stays), "14");
    EXPECT_EQ(selected(), "12 14");
    EXPECT_EQ(shown(late, "arrival.arid"), "13 14");
    EXPECT_EQ(ofView.row(), 1);
}

TEST_F(Changing, OwnCrunchesMoveRowsOfViewsAtOnce)
{
    OrvaneTableModel &late = *arrival().subset("arid >= 12", "late");
    QTableView ofLate;
    ofLate.setModel(&late);
    const QPersistentModelIndex last = late.index(2, 1);
    static_cast<QDbptr *>(arrival().indexForRow(1).internalPointer())->dbMark();
    arrival().crunch();
    EXPECT_EQ(late.rowCount(), 2);
    EXPECT_EQ(last.row(), 1);
    EXPECT_EQ(QModelIndex(last).siblingAtColumn(3).data(), QVariant("14"));
}

TEST_F(Changing, ACrunchInASortedTableKeepsTheOrderAndTheRecords)
{
    arrival().sort(column("arid"), Qt::DescendingOrder);
    ASSERT_EQ(ids(), "14 13 12 11");
    select(3);
    Dbptr record = arrival().getDbptr();
    record.record = 2; // of the table, whose sorted view stands on another row there
    QDbptr(arrival().getQDbptr()->getConnection(), record).dbMark();
    arrival().crunch();
    EXPECT_EQ(ids(), "14 12 11");
    EXPECT_EQ(at(view.currentIndex()), "11");
    EXPECT_EQ(selected(), "11");
}

TEST_F(Changing, ASortedTableIsSortedAnewWhenOthersAppend)
{
    arrival().sort(column("sta"));
    ASSERT_EQ(ids(), "12 13 11 14");
    select(2);
    quakes.files.appendRows("arrival", {{"ANMO", "1517961710.0", "15"}});
    QSignalSpy reset(&arrival(), &QAbstractItemModel::modelReset);
    ASSERT_TRUE(QTest::qWaitFor([&] {
        arrival().announceChanged(&arrival());
        return arrival().rowCount() == 5;
    }));
    EXPECT_EQ(ids(), "12 13 15 11 14");
    EXPECT_EQ(at(view.currentIndex()), "11");
    EXPECT_EQ(selected(), "11");
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(Changing, ASortedTableKeepsItsRowsWhereOneEditsThem)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // a file's first moments hide changes
    arrival().sort(column("sta"));
    ASSERT_TRUE(arrival().setData(arrival().index(0, column("sta")), "ZZZ"));
    EXPECT_EQ(ids("sta"), "ZZZ AAK KDAK PFO");
    check();
    EXPECT_EQ(ids("sta"), "ZZZ AAK KDAK PFO") << "a row does not jump away under one's hands";
}

TEST_F(Changing, OfAnotherProgramsCrunchIsFollowedByTheKeysOfNotedRecords)
{
    select(2);
    const QPersistentModelIndex other = arrival().index(3, 1);
    QSignalSpy reset(&arrival(), SIGNAL(modelReset()));
    replace({aak, second, pfo});
    EXPECT_FALSE(arrival().isCurrent());
    check();
    EXPECT_TRUE(arrival().isCurrent());
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(ids(), "12 13 14");
    EXPECT_EQ(view.currentIndex().row(), 1);
    EXPECT_EQ(at(view.currentIndex()), "13");
    EXPECT_EQ(selected(), "13");
    EXPECT_FALSE(other.isValid()) << "of a record that nobody noted";
    // Once more: what was noted goes on being followed.
    replace({second, kdak});
    check();
    EXPECT_EQ(at(view.currentIndex()), "13");
    EXPECT_EQ(view.currentIndex().row(), 0);
}

TEST_F(Changing, OfAnotherProgramEndsIndexesOfRecordsThatAreGone)
{
    select(1);
    replace({kdak, second, pfo, {"TLY", "1517961710.0", "15"}, {"TLY", "1517961720.0", "16"}});
    check();
    EXPECT_EQ(arrival().rowCount(), 5);
    EXPECT_FALSE(view.currentIndex().isValid());
    EXPECT_EQ(selected(), "");
}

TEST_F(Changing, OfAnotherProgramIsFollowedInASortedTable)
{
    arrival().sort(column("arid"), Qt::DescendingOrder);
    select(1);
    ASSERT_EQ(at(view.currentIndex()), "13");
    replace({{"TLY", "1517961710.0", "99"}, second, pfo});
    check();
    EXPECT_EQ(ids(), "99 14 13");
    EXPECT_EQ(at(view.currentIndex()), "13");
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Changing, OfAnotherProgramOutdatesViews)
{
    OrvaneTableModel &late = *arrival().subset("arid >= 12", "late");
    EXPECT_FALSE(late.isOutdated());
    check();
    EXPECT_FALSE(late.isOutdated());
    replace({aak, second, pfo});
    check();
    EXPECT_TRUE(late.isOutdated());
    EXPECT_FALSE(late.data(late.index(0, 1)).isValid()) << "no wrong record";
    elog_clear();
    EXPECT_FALSE(arrival().subset("arid >= 12", "again")->isOutdated());
}

TEST_F(Changing, AnOlderFileInTheTablesPlaceIsNoticedToo)
{
    check();
    replace({pfo});
    std::filesystem::last_write_time(quakes.files.tablePath("arrival"),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(24));
    check();
    EXPECT_EQ(ids(), "14");
}

TEST_F(Changing, NoChangeIsStoredInARecordThatMayBeAnother)
{
    replace({aak, second, pfo});
    const std::string before = TemporaryDatabase::readFile(quakes.files.tablePath("arrival"));
    EXPECT_FALSE(arrival().setData(arrival().index(1, column("phase")), "Pn"));
    EXPECT_TRUE(arrival().editError().contains("another program replaced the table"))
        << arrival().editError().toStdString();
    EXPECT_EQ(TemporaryDatabase::readFile(quakes.files.tablePath("arrival")), before);
    ASSERT_TRUE(QTest::qWaitFor([&] { return arrival().isCurrent(); }));
    EXPECT_TRUE(arrival().setData(arrival().index(1, column("phase")), "Pn"));
    EXPECT_EQ(ids("phase"), "P Pn P");
}

TEST_F(Changing, ATableThatIsDeletedHasNoRowsAndCanNotBeChanged)
{
    select(1);
    std::filesystem::remove(quakes.files.tablePath("arrival"));
    EXPECT_FALSE(arrival().setData(arrival().index(1, column("phase")), "Pn"));
    EXPECT_FALSE(arrival().editError().isEmpty());
    check();
    EXPECT_EQ(arrival().rowCount(), 0);
    EXPECT_FALSE(view.currentIndex().isValid());
    EXPECT_FALSE(std::filesystem::exists(quakes.files.tablePath("arrival")));
    quakes.files.addTable("arrival", {aak});
    check();
    EXPECT_EQ(ids(), "12");
}

TEST_F(Changing, ViewsTellOfCellsThatWereEditedInTheirTables)
{
    OrvaneTableModel &late = *arrival().subset("arid >= 12", "late");
    QSignalSpy changed(&late, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    QSignalSpy elsewhere(quakes.table("origin"), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    ASSERT_TRUE(arrival().setData(arrival().index(1, column("phase")), "Pn"));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(elsewhere.count(), 0);
    // By another program, too.
    quakes.files.addTable("arrival", {kdak, aak, {"AAK", "1517961690.0", "13", "2018038", "Lg"}, pfo});
    check();
    EXPECT_GE(changed.count(), 1);
}

TEST_F(Changing, IsFollowedThroughTextsWithQuotes)
{
    quakes.files.addTable("site", {{"it's", "2001001"}, {"a\\b", "2001001"}, {"PFO", "2001001"}});
    check();
    OrvaneTableModel &site = *quakes.table("site");
    const QPersistentModelIndex quoted = site.index(0, 1), slashed = site.index(1, 1);
    site.noteRows(this, {0, 1});
    std::filesystem::rename(quakes.files.tablePath("site"), quakes.files.tablePath("old"));
    quakes.files.addTable("site", {{"a\\b", "2001001"}, {"it's", "2001001"}});
    check();
    EXPECT_EQ(quoted.row(), 1);
    EXPECT_EQ(slashed.row(), 0);
    EXPECT_EQ(elog_count(), 0);
}

} // namespace
