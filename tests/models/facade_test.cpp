// The sorted view that a table model shows in place of its table.

#include "quake_database.h"

#include <QHeaderView>
#include <QPointer>
#include <QSignalSpy>
#include <QTableView>
#include <dlfcn.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <orvane/db.h>

namespace {

using ::testing::HasSubstr;

// Runs before each sort of the library, which is not called when it answers false.
std::function<bool()> beforeSort;

constexpr int latColumn = 1; // of origin
constexpr int oridColumn = 5;

struct Facade : testing::Test {
    Quakes quakes;
    OrvaneDatabaseModel &model = *quakes.model;
    OrvaneTableModel &origin = *quakes.table("origin");

    ~Facade() override { beforeSort = nullptr; }

    // The ids in the order shown; the facade names its fields with their table.
    QString ids() const { return shownIds(origin); }

    static QString shownIds(const OrvaneTableModel &table)
    {
        QStringList texts;
        for (int row = 0; row < table.rowCount(); ++row)
            texts.append(table.data(table.index(row, oridColumn)).toString());
        return texts.join(' ');
    }
};

} // namespace

// In front of the library's own.
extern "C" __attribute__((visibility("default"))) Dbptr dbsort(Dbptr db, const Tbl *fields, int flags,
                                                               const char *view)
{
    static const auto library = reinterpret_cast<decltype(&dbsort)>(dlsym(RTLD_NEXT, "dbsort"));
    return beforeSort && !beforeSort() ? dbinvalid() : library(db, fields, flags, view);
}

namespace {

TEST_F(Facade, ShowsTheOrderOfAColumn)
{
    origin.sort(latColumn, Qt::AscendingOrder);
    EXPECT_EQ(ids(), "2 1 3");
    origin.sort(latColumn, Qt::DescendingOrder);
    EXPECT_EQ(ids(), "3 1 2");
    origin.sort(6); // evid, stable
    EXPECT_EQ(ids(), "1 3 2");
}

TEST_F(Facade, IsAViewThatNoListOfNamesNeedShow)
{
    origin.sort(latColumn, Qt::AscendingOrder);
    EXPECT_EQ(origin.getFacadeTableName(), "origin_sort1");
    EXPECT_EQ(model.getViewNames(), QList<QString>{"origin_sort1"});
    EXPECT_TRUE(model.getViewNamesSkipFacades().isEmpty());
    OrvaneTableModel &facade = *quakes.table("origin_sort1");
    EXPECT_TRUE(facade.tableIsFacade());
    EXPECT_TRUE(facade.tableIsView());
    EXPECT_FALSE(origin.tableIsFacade());
    EXPECT_EQ(origin.getFacadeDbptr().table, facade.getDbptr().table);
    // The own table stays what it is.
    EXPECT_EQ(origin.getTableName(), "origin");
    EXPECT_NE(origin.getDbptr().table, facade.getDbptr().table);
    EXPECT_FALSE(origin.tableIsView());
    EXPECT_TRUE(origin.getViewTables().isEmpty());
    EXPECT_EQ(origin.findJoinTables(), origin.getQDbptr()->findJoinTables());
    // Fields and keys are those of what is shown.
    EXPECT_EQ(origin.getTableFields(), facade.getTableFields());
    EXPECT_EQ(origin.getTableFields().first(), "origin.lat");
    EXPECT_EQ(origin.fieldNameForColumnIndex(1), "origin.lat");
    EXPECT_EQ(origin.fieldNameForColumnIndex(10), "origin.lddate");
    EXPECT_EQ(origin.fieldNameForColumnIndex(11), "");
    EXPECT_EQ(origin.headerData(1, Qt::Horizontal), QVariant("lat"));
    EXPECT_EQ(origin.headerData(1, Qt::Horizontal, Qt::UserRole), QVariant("lat"));
    EXPECT_EQ(origin.getColumnType(1), dbREAL);
    EXPECT_EQ(origin.getPrimaryKey(), (QList<QString>{"lat", "lon", "depth", "time"}));
    EXPECT_EQ(origin.columnCount(), 11);
    EXPECT_EQ(origin.indexForColumn("origin.orid").column(), oridColumn);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, IsReplacedAndDeletedByTheNextSort)
{
    origin.sort(latColumn);
    const QPointer<OrvaneTableModel> first = quakes.table("origin_sort1");
    ASSERT_TRUE(first);
    origin.sort(2, Qt::DescendingOrder);
    EXPECT_FALSE(first);
    ASSERT_EQ(model.getViewNames().size(), 1);
    EXPECT_EQ(origin.getFacadeTableName(), model.getViewNames().first());
    EXPECT_EQ(ids(), "2 3 1");
}

TEST_F(Facade, StaysWhenSortedByTheRecordNumberOrNothing)
{
    for (int column : {0, -1, 11, 99}) {
        QSignalSpy before(&origin, SIGNAL(layoutAboutToBeChanged()));
        QSignalSpy after(&origin, SIGNAL(layoutChanged()));
        origin.sort(column);
        EXPECT_EQ(ids(), "1 2 3") << column;
        EXPECT_TRUE(model.getViewNames().isEmpty());
        EXPECT_EQ(before.count(), 1);
        EXPECT_EQ(after.count(), 1);
    }
    origin.sort(latColumn);
    origin.sort(0, Qt::DescendingOrder);
    EXPECT_EQ(ids(), "2 1 3");
    EXPECT_EQ(model.getViewNames(), QList<QString>{"origin_sort1"});
}

TEST_F(Facade, IsAnnouncedBetweenTheSignalsOfTheChange)
{
    QStringList told;
    const QObject listener; // ends before what it writes to
    QObject::connect(&origin, &QAbstractItemModel::layoutAboutToBeChanged, &listener,
                     [&] { told.append("about to change"); });
    QObject::connect(&origin, &QAbstractItemModel::layoutChanged, &listener,
                     [&] { told.append("changed " + ids()); });
    QObject::connect(&origin, &QAbstractItemModel::modelReset, &listener, [&] { told.append("reset"); });
    QObject::connect(&model, &OrvaneDatabaseModel::tableAdded, &listener, [&](OrvaneTableModel *added) {
        told.append("added " + added->getTableName() + (added->tableIsFacade() ? " as facade" : ""));
    });
    origin.sort(latColumn);
    EXPECT_EQ(told, (QStringList{"about to change", "added origin_sort1 as facade", "changed 2 1 3"}));
}

TEST_F(Facade, GoesWithItsTable)
{
    OrvaneTableModel &eights = *origin.subset("evid == 8", "eights");
    eights.sort(latColumn, Qt::DescendingOrder);
    EXPECT_EQ(shownIds(eights), "3 1");
    EXPECT_EQ(eights.getFacadeTableName(), "origin_sort1");
    ASSERT_EQ(model.getViewNames(), (QList<QString>{"eights", "origin_sort1"}));
    EXPECT_EQ(model.getViewNamesSkipFacades(), QList<QString>{"eights"});
    model.deleteView("eights");
    EXPECT_TRUE(model.getViewNames().isEmpty());
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, ThatSomebodyDeletesLeavesTheTableItself)
{
    origin.sort(latColumn);
    QSignalSpy reset(&origin, &QAbstractItemModel::modelReset);
    model.deleteView("origin_sort1");
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(origin.rowCount(), 3);
    EXPECT_EQ(ids(), "1 2 3");
    EXPECT_EQ(origin.getFacadeTableName(), "origin");
    EXPECT_EQ(origin.getTableFields().first(), "lat");
    origin.sort(latColumn);
    EXPECT_EQ(ids(), "2 1 3");
}

TEST_F(Facade, ThatCannotBeMadeLeavesTheOwnOrder)
{
    OrvaneTableModel &eights = *origin.subset("evid == 8", "eights");
    eights.sort(latColumn, Qt::DescendingOrder);
    // Another program writes the table anew: the rows of views hold no longer.
    quakes.files.addTable("origin", {{"1.0", "1.0", "1.0", "1517961600.0", "4", "8"}});
    QSignalSpy before(&eights, SIGNAL(layoutAboutToBeChanged()));
    QSignalSpy after(&eights, SIGNAL(layoutChanged()));
    EXPECT_NO_THROW(eights.sort(latColumn));
    EXPECT_EQ(before.count(), 1);
    EXPECT_EQ(after.count(), 1);
    EXPECT_EQ(eights.getFacadeTableName(), "eights");
    EXPECT_EQ(model.getViewNames(), QList<QString>{"eights"});
    const std::unique_ptr<char, decltype(&free)> log(elog_string(0), &free);
    EXPECT_THAT(log.get(), HasSubstr("dbsort: "));
    elog_clear();
}

TEST_F(Facade, OrdersTheColumnThatIsClickedWhereSeveralHaveItsName)
{
    OrvaneTableModel &both = *quakes.table("arrival")->thetaJoinTo(
        "origin", "arrival.time > origin.time - 1000 && phase == 'P'", "both");
    ASSERT_EQ(both.rowCount(), 9);
    const int time = both.getTableFields().indexOf("origin.time") + 1;
    both.sort(time, Qt::DescendingOrder);
    EXPECT_EQ(shown(both, "origin.orid"), "3 3 3 2 2 2 1 1 1");
    const QString creation = quakes.table(both.getFacadeTableName())->getQDbptr()->getTableCreation();
    EXPECT_THAT(creation.toStdString(), HasSubstr("dbsort -reverse origin.time"));
    both.sort(both.getTableFields().indexOf("arrival.time") + 1);
    EXPECT_EQ(shown(both, "arrival.arid"), "11 11 11 12 12 12 14 14 14");
    EXPECT_THAT(quakes.table(both.getFacadeTableName())->getQDbptr()->getTableCreation().toStdString(),
                HasSubstr("dbsort time"));
}

TEST_F(Facade, OfAGroupedViewOrdersItsBundles)
{
    OrvaneTableModel &events = *origin.group({"evid"}, "events");
    events.sort(1, Qt::DescendingOrder);
    EXPECT_EQ(shown(events, "events.evid"), "9 8");
}

TEST_F(Facade, IsNotWhatFurtherViewsAreMadeOf)
{
    origin.sort(latColumn);
    EXPECT_EQ(shown(*origin.subset("evid == 8", ""), "origin.orid"), "1 3");
    EXPECT_EQ(shown(*origin.sort({"depth"}, false, false, ""), "origin.orid"), "1 3 2");
}

TEST_F(Facade, ShowsRecordsThatCameSince)
{
    QTableView view; // listens for rows
    view.setModel(&origin);
    EXPECT_EQ(origin.rowCount(), 3);
    quakes.files.appendRows("origin", {{"0.0", "0.0", "0.0", "1517961900.0", "4", "8"}});
    origin.sort(latColumn);
    EXPECT_EQ(ids(), "2 4 1 3");
    EXPECT_EQ(view.verticalHeader()->count(), 4);
}

TEST_F(Facade, KeepsPersistentIndexesWithTheirRecords)
{
    const QPersistentModelIndex first = origin.index(0, 2);
    const QPersistentModelIndex third = origin.index(2, oridColumn);
    const QPersistentModelIndex withHandle = origin.indexForCell(1, "orid");
    const auto places = [&] {
        return QList<int>{first.row(), first.column(), third.row(), third.column(), withHandle.row()};
    };
    origin.sort(latColumn);
    EXPECT_EQ(places(), (QList<int>{1, 2, 2, oridColumn, 0}));
    EXPECT_EQ(third.data(), QVariant("3"));
    origin.sort(latColumn, Qt::DescendingOrder);
    EXPECT_EQ(places(), (QList<int>{1, 2, 0, oridColumn, 2}));
    beforeSort = [] { return false; };
    origin.sort(latColumn);
    EXPECT_EQ(places(), (QList<int>{0, 2, 2, oridColumn, 1}));
    beforeSort = nullptr;
    origin.sort(0);
    EXPECT_EQ(places(), (QList<int>{0, 2, 2, oridColumn, 1}));
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, KeepsTheSelectionAndTheCurrentCellWithTheirRecords)
{
    OrvaneTableModel &joined = *quakes.table("arrival")->outerJoinTo("assoc", "joined");
    QTableView view;
    view.setModel(&joined);
    view.setColumnHidden(2, true);
    view.setColumnWidth(3, 123);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.selectRow(0); // arid 11, beside no association
    view.selectionModel()->select(joined.index(2, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view.selectionModel()->setCurrentIndex(joined.index(2, 4), QItemSelectionModel::NoUpdate);
    const auto selected = [&] {
        QStringList arrivals;
        for (const QModelIndex &index : view.selectionModel()->selectedRows(3))
            arrivals.append(index.data().toString());
        arrivals.sort();
        return arrivals.join(' ');
    };
    ASSERT_EQ(selected(), "11 13");
    for (const int column : {1, 2, 3, 5, 9}) {
        for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder}) {
            view.sortByColumn(column, order);
            joined.sort(column, order);
            EXPECT_EQ(selected(), "11 13") << column;
            EXPECT_EQ(view.currentIndex().siblingAtColumn(3).data(), QVariant("13")) << column;
        }
    }
    EXPECT_TRUE(view.isColumnHidden(2));
    EXPECT_EQ(view.columnWidth(3), 123);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, ForgetsPersistentIndexesOfRecordsThatAreGone)
{
    origin.sort(latColumn);
    const QPersistentModelIndex second = origin.index(1, 1);
    quakes.files.addTable("origin", {{"1.0", "1.0", "1.0", "1517961600.0", "4", "8"},
                                     {"0.0", "1.0", "1.0", "1517961600.0", "5", "8"}});
    origin.sort(latColumn);
    EXPECT_EQ(ids(), "5 4");
    EXPECT_FALSE(second.isValid());
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, PutsOffTheResetOfATableThatChangesWhileItIsMade)
{
    QStringList told;
    const QObject listener; // ends before what it writes to
    QObject::connect(&origin, &QAbstractItemModel::layoutChanged, &listener, [&] { told.append("changed"); });
    QObject::connect(&origin, &OrvaneTableModel::modelReset, &listener, [&] { told.append("reset"); });
    beforeSort = [&] {
        origin.announceChanged(&origin);
        return true;
    };
    origin.sort(latColumn);
    EXPECT_EQ(told, (QStringList{"changed", "reset"}));
    beforeSort = nullptr;
    origin.sort(latColumn);
    EXPECT_EQ(told, (QStringList{"changed", "reset", "changed"}));
}

TEST_F(Facade, OfAClosedDatabaseGoesQuietly)
{
    origin.sort(latColumn);
    model.close();
    EXPECT_EQ(origin.rowCount(), 0);
    origin.sort(latColumn);
    EXPECT_EQ(origin.rowCount(), 0);
    ASSERT_TRUE(model.open());
    OrvaneTableModel &again = *quakes.table("origin");
    again.sort(latColumn);
    EXPECT_EQ(shownIds(again), "2 1 3");
    quakes.model.reset();
    EXPECT_EQ(again.rowCount(), 0);
    again.sort(latColumn);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Facade, ThatIsCancelledLeavesTheOwnOrder)
{
    origin.sort(latColumn);
    QSignalSpy after(&origin, SIGNAL(layoutChanged()));
    QSignalSpy added(&model, SIGNAL(tableAdded(OrvaneTableModel *)));
    for (const char *reason : {"dbsort: cancelled", "dbsort: out of memory"}) {
        beforeSort = [reason] {
            elog_log("%s", reason);
            return false;
        };
        origin.sort(latColumn, Qt::DescendingOrder);
        EXPECT_EQ(ids(), "1 2 3");
        EXPECT_EQ(origin.getFacadeTableName(), "origin");
        EXPECT_TRUE(model.getViewNames().isEmpty());
        const std::unique_ptr<char, decltype(&free)> log(elog_string(0), &free);
        EXPECT_STREQ(log.get(), reason);
        elog_clear();
    }
    EXPECT_EQ(after.count(), 2);
    EXPECT_EQ(added.count(), 0);
    beforeSort = nullptr;
    origin.sort(latColumn, Qt::DescendingOrder);
    EXPECT_EQ(ids(), "3 1 2");
}

TEST_F(Facade, IsMadeOnceWhenAskedForWhileItIsMade)
{
    int asked = 0;
    beforeSort = [&] {
        ++asked;
        origin.sort(latColumn, Qt::DescendingOrder); // as from a progress hook that lets events in
        return true;
    };
    QSignalSpy after(&origin, SIGNAL(layoutChanged()));
    origin.sort(latColumn);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(after.count(), 1);
    EXPECT_EQ(ids(), "2 1 3");
    EXPECT_EQ(model.getViewNames(), QList<QString>{"origin_sort1"});
    EXPECT_EQ(elog_count(), 0);
}

} // namespace
