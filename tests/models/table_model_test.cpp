#include "open_database.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTableView>
#include <gtest/gtest.h>
#include <orvane/util.h>

#include <qovutil.h>

namespace {

const QStringList siteFields = {"sta", "ondate", "offdate", "lat", "lon", "elev", "staname", "lddate"};

QDbptr *handleOf(const QModelIndex &index)
{
    return static_cast<QDbptr *>(index.internalPointer());
}

struct TableModel : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();
};

TEST_F(TableModel, SetsItsDefaultsAsTheKeysAreSpelt)
{
    const OvConfig &config = sites.config;
    for (const char *key : {"show_blanks_background_colored", "show_nulls_background_colored",
                            "show_readable_times", "show_tooltips"})
        EXPECT_EQ(config[key], QVariant(true)) << key;
    for (const char *key : {"allow_edits", "show_raw_nulls", "show_times_in_local_zone"})
        EXPECT_EQ(config[key], QVariant(false)) << key;
    EXPECT_EQ(config["background_blanks_color"], QVariant("light yellow"));
    EXPECT_EQ(config["background_null_color"], QVariant("light gray"));
    EXPECT_EQ(config["time_string_format"], QVariant("%D (%j) %H:%M:%S.%u %Z"));
    EXPECT_EQ(config["local_time_zone"], QVariant(""));
    EXPECT_FALSE(config["background_blank_color"].isValid());
}

TEST_F(TableModel, HasARowPerRecordAndAColumnMoreThanFields)
{
    EXPECT_EQ(site.rowCount(), 3);
    EXPECT_EQ(site.columnCount(), 9);
    EXPECT_EQ(site.rowCount(site.index(0, 0)), 0);
    EXPECT_EQ(site.columnCount(site.index(0, 0)), 0);
}

TEST_F(TableModel, NamesItsColumns)
{
    EXPECT_EQ(site.fieldNameForColumnIndex(-1), "");
    EXPECT_EQ(site.fieldNameForColumnIndex(0), "recno");
    EXPECT_EQ(site.fieldNameForColumnIndex(1), "sta");
    EXPECT_EQ(site.fieldNameForColumnIndex(8), "lddate");
    EXPECT_EQ(site.fieldNameForColumnIndex(9), "");
    EXPECT_EQ(site.getTableFields(), siteFields);
}

TEST_F(TableModel, KnowsTheTypesOfItsColumns)
{
    OrvaneTableModel &kinds = *sites.table("kinds");
    const QList<int> types = {dbBOOLEAN, dbINTEGER, dbREAL, dbTIME, dbYEARDAY, dbSTRING, dbDBPTR};
    for (int i = 0; i < types.size(); ++i)
        EXPECT_EQ(kinds.getColumnType(i + 1), types[i]) << i;
    EXPECT_EQ(kinds.getColumnType(0), 0);
    EXPECT_EQ(kinds.getColumnType(99), 0);
    EXPECT_EQ(kinds.getColumnType(-1), 0);
}

TEST_F(TableModel, KnowsItsTable)
{
    EXPECT_EQ(site.getParent(), sites.model.get());
    EXPECT_EQ(site.getTableName(), "site");
    EXPECT_EQ(site.getFacadeTableName(), "site");
    EXPECT_EQ(site.getQDbptr()->getDbptrType(), DbptrTable);
    EXPECT_EQ(site.getDbptr().table, site.getFacadeDbptr().table);
    EXPECT_TRUE(site.tableIsPresent());
    EXPECT_FALSE(sites.table("origin")->tableIsPresent());
    EXPECT_FALSE(site.tableIsWritable()); // opened to read
    EXPECT_FALSE(site.tableIsView());
    EXPECT_FALSE(site.tableIsStdinView());
    EXPECT_FALSE(site.tableIsFacade());
    EXPECT_TRUE(site.getViewTables().isEmpty());
    EXPECT_EQ(site.getTableToolTipString(), qovutil_getToolTipString(site.getQDbptr(), nullptr));
}

TEST_F(TableModel, IsAFacadeOnceItIsSaidToBe)
{
    OrvaneTableModel &origin = *sites.table("origin");
    origin.setIsFacadeOf(&site);
    EXPECT_TRUE(origin.tableIsFacade());
    EXPECT_FALSE(site.tableIsFacade());
    origin.setIsFacadeOf(nullptr);
    EXPECT_FALSE(origin.tableIsFacade());
}

TEST_F(TableModel, KnowsKeysAndJoinTables)
{
    EXPECT_EQ(site.getPrimaryKey(), (QList<QString>{"sta", "ondate::offdate"}));
    EXPECT_EQ(sites.table("origin")->getAlternateKey(), QList<QString>{"orid"});
    EXPECT_EQ(sites.table("origin")->getForeignKeys(), (QList<QString>{"evid", "commid"}));
    EXPECT_EQ(site.findJoinTables(), site.getQDbptr()->findJoinTables());
    EXPECT_TRUE(site.findJoinTables().contains("arrival"));
    EXPECT_FALSE(site.findJoinTablesPresent().contains("arrival"));
    sites.files.addTable("arrival", {});
    EXPECT_EQ(site.findJoinTablesPresent(), site.getQDbptr()->findJoinTablesPresent());
    EXPECT_TRUE(site.findJoinTablesPresent().contains("arrival"));
}

TEST_F(TableModel, FindsTheFieldsThatHoldValues)
{
    EXPECT_EQ(site.getNonNullTableFields(), site.getQDbptr()->getNonNullTableFields());
    EXPECT_EQ(site.getNonNullTableFields(), siteFields);
    sites.files.addTable("arrival", {{"AAK", "1517961600.0"}, {"-", "1517961700.0", "-1", "2018037"}});
    EXPECT_EQ(sites.table("arrival")->getNonNullTableFields(), (QList<QString>{"sta", "time", "jdate"}));
    EXPECT_TRUE(sites.table("origin")->getNonNullTableFields().isEmpty());
}

TEST_F(TableModel, IsEditableWhenTheConfigurationAllowsIt)
{
    const QModelIndex recordNumber = site.index(0, 0);
    const QModelIndex cell = site.index(1, 2);
    EXPECT_FALSE(site.flags(cell) & Qt::ItemIsEditable);
    sites.config.configure("allow_edits", true);
    EXPECT_TRUE(site.flags(cell) & Qt::ItemIsEditable);
    EXPECT_TRUE(site.flags(recordNumber) & Qt::ItemIsEditable);
    EXPECT_TRUE(site.flags(cell) & Qt::ItemIsSelectable);
}

TEST_F(TableModel, WithoutAHandleIsEmpty)
{
    OrvaneTableModel none(sites.model.get(), nullptr, sites.config);
    EXPECT_EQ(none.rowCount(), 0);
    EXPECT_EQ(none.columnCount(), 0);
    EXPECT_EQ(none.getTableName(), "");
    EXPECT_EQ(none.getTableToolTipString(), "");
    EXPECT_FALSE(none.tableIsPresent());
    EXPECT_TRUE(none.getTableFields().isEmpty());
    EXPECT_TRUE(none.getNonNullTableFields().isEmpty());
    EXPECT_TRUE(none.findJoinTables().isEmpty());
    EXPECT_EQ(none.fieldNameForColumnIndex(1), "");
    EXPECT_EQ(none.indexForCell(0, "sta").internalPointer(), nullptr);
    EXPECT_EQ(none.indexForRow(0).internalPointer(), nullptr);
    EXPECT_LT(none.getDbptr().table, 0);
    EXPECT_FALSE(none.headerData(1, Qt::Horizontal, Qt::SizeHintRole).isValid());
}

TEST_F(TableModel, GivesIndexesWithHandles)
{
    const QModelIndex row = site.indexForRow(2);
    EXPECT_EQ(row.row(), 2);
    EXPECT_EQ(row.column(), 0);
    EXPECT_EQ(handleOf(row)->getDbptrType(), DbptrRecord);
    EXPECT_EQ(handleOf(row)->getIndexRecord(), 2);

    const QModelIndex column = site.indexForColumn("lat");
    EXPECT_EQ(column.row(), 0);
    EXPECT_EQ(column.column(), 4);
    EXPECT_EQ(handleOf(column)->getDbptrType(), DbptrField);
    EXPECT_EQ(handleOf(column)->getFieldName(), "lat");

    const QModelIndex cell = site.indexForCell(1, "sta");
    EXPECT_EQ(cell.row(), 1);
    EXPECT_EQ(cell.column(), 1);
    EXPECT_EQ(handleOf(cell)->dbGet(false).trimmed(), "ANMO");
    EXPECT_EQ(site.indexForCell(1, "sta").internalPointer(), cell.internalPointer());
}

TEST_F(TableModel, GivesColumn0ForAnUnknownField)
{
    EXPECT_EQ(site.indexForColumn("nosuchfield").column(), 0);
    EXPECT_EQ(site.indexForCell(1, "nosuchfield").column(), 0);
    EXPECT_EQ(site.indexForCell(1, "nosuchfield").internalPointer(), nullptr);
}

TEST_F(TableModel, ReachesTheScratchAndTheNullRecordByTheirPointers)
{
    QDbptr *null = handleOf(site.indexForCell(dbNULL, "lat"));
    ASSERT_TRUE(null);
    EXPECT_EQ(null->getDbptrType(), DbptrCell);
    EXPECT_EQ(null->dbGet(false).trimmed(), "-999.0000");
    QDbptr *scratch = handleOf(site.indexForRow(dbSCRATCH));
    ASSERT_TRUE(scratch);
    EXPECT_EQ(scratch->getDbptrType(), DbptrRecord);
    EXPECT_EQ(handleOf(site.indexForCell(-1, "lat")), nullptr);
}

TEST_F(TableModel, AddsAHandleToAnIndex)
{
    const QModelIndex plain = site.index(1, 4);
    EXPECT_EQ(plain.internalPointer(), nullptr);
    const QModelIndex withHandle = site.addQdbptrToIndex(plain);
    EXPECT_EQ(withHandle.row(), 1);
    EXPECT_EQ(withHandle.column(), 4);
    EXPECT_EQ(handleOf(withHandle)->dbGet(false).trimmed(), "34.9459");
    EXPECT_EQ(site.addQdbptrToIndex(withHandle).internalPointer(), withHandle.internalPointer());
    const QModelIndex ofColumn = site.indexForColumn("lat");
    EXPECT_EQ(site.addQdbptrToIndex(ofColumn).internalPointer(), ofColumn.internalPointer());
    EXPECT_EQ(site.addQdbptrToIndex(site.index(1, 0)).internalPointer(), nullptr);
    EXPECT_FALSE(site.addQdbptrToIndex(QModelIndex()).isValid());
}

TEST_F(TableModel, BoundsTheHandlesItKeeps)
{
    const QModelIndex first = site.indexForCell(0, "sta");
    const QPointer<QDbptr> evicted = handleOf(first);
    QList<QPointer<QDbptr>> asked;
    for (int row = 0; row < 1000000; ++row) {
        QDbptr *handle = handleOf(site.indexForCell(row, "lat"));
        ASSERT_TRUE(handle);
        if (row % 1000 == 0)
            asked.append(handle);
    }
    EXPECT_FALSE(evicted);
    const auto alive =
        std::count_if(asked.begin(), asked.end(), [](const auto &handle) { return !handle.isNull(); });
    EXPECT_EQ(alive, 16); // of 16384 places in a row every thousandth
    EXPECT_TRUE(asked.last());

    // The old index is still safe to give back, also when its pointer's address has been used again.
    QDbptr *again = handleOf(site.addQdbptrToIndex(first));
    EXPECT_EQ(again->getIndexRecord(), 0);
    EXPECT_EQ(again->getFieldName(), "sta");
}

TEST_F(TableModel, KeepsTheHandleThatIsAskedForAgain)
{
    const QPointer<QDbptr> kept = handleOf(site.indexForCell(0, "sta"));
    for (int row = 1; row < 40000; ++row) {
        site.indexForCell(row, "lat");
        if (row % 10000 == 0) {
            EXPECT_EQ(handleOf(site.indexForCell(0, "sta")), kept.data());
        }
    }
    EXPECT_TRUE(kept);
}

TEST_F(TableModel, HandlesOfIndexesOutliveTheDatabaseAndAreInvalid)
{
    const QPointer<QDbptr> cell = handleOf(site.indexForCell(0, "sta"));
    sites.model->close();
    ASSERT_TRUE(cell);
    EXPECT_FALSE(cell->isValid());
    EXPECT_THROW(cell->getFieldName(), std::runtime_error);
}

TEST_F(TableModel, EmitsItsResetWhenItIsNamedAsChanged)
{
    QSignalSpy own(&site, SIGNAL(modelReset()));
    QSignalSpy inherited(&site, &QAbstractItemModel::modelReset);
    QSignalSpy before(&site, SIGNAL(modelAboutToBeReset()));
    QSignalSpy cells(&site, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    site.announceChanged(sites.table("origin"));
    site.announceChanged(nullptr);
    EXPECT_EQ(own.count() + inherited.count() + before.count() + cells.count(), 0);
    site.announceChanged(&site);
    EXPECT_EQ(own.count(), 1);
    EXPECT_EQ(cells.count(), 1);
    EXPECT_EQ(inherited.count() + before.count(), 0) << "what is shown has not ended";
}

TEST_F(TableModel, TakesTheChangeInWhenAHandleSaysThatDataChanged)
{
    QSignalSpy cells(&site, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    QDbptr *cell = handleOf(site.indexForCell(0, "sta"));
    QObject::connect(cell, SIGNAL(dataChanged()), &site, SIGNAL(modelReset()));
    emit cell->dataChanged();
    EXPECT_EQ(cells.count(), 1);
}

struct CountingView : QTableView {
    int resets = 0;
    int rowsAtReset = -1;
    void reset() override
    {
        ++resets;
        QTableView::reset();
        rowsAtReset = model() ? model()->rowCount() : -1;
    }
};

TEST_F(TableModel, ResetsTheViewsThatShowItAfterTakingTheChangeIn)
{
    CountingView view;
    view.setModel(&site);
    const int before = view.resets;
    sites.files.appendRows("site", {{"PFO", "2000001"}, {"TLY", "2000001"}});
    emit site.modelReset();
    EXPECT_EQ(view.resets, before + 1);
    EXPECT_EQ(view.rowsAtReset, 5);
    EXPECT_EQ(view.model()->index(4, 1).data().toString(), "TLY");
}

TEST_F(TableModel, EmptiesTheViewsThatShowItWhenTheDatabaseIsClosed)
{
    CountingView view;
    view.setModel(&site);
    const int before = view.resets;
    sites.model->close();
    EXPECT_GT(view.resets, before);
    EXPECT_EQ(view.rowsAtReset, 0);
}

TEST_F(TableModel, TellsOfLayoutChangesWhenTheConfigurationChanges)
{
    QSignalSpy layout(&site, SIGNAL(layoutChanged()));
    sites.config.toggle("show_raw_nulls");
    EXPECT_GE(layout.count(), 1);
}

TEST_F(TableModel, WithATableOfTheWrongWidthIsEmptyAndTheOthersStay)
{
    sites.files.writeFile("quakes.origin", "not a record\nnor this\n");
    OrvaneTableModel &origin = *sites.table("origin");
    EXPECT_EQ(origin.rowCount(), 0);
    EXPECT_EQ(origin.columnCount(), 11);
    EXPECT_FALSE(origin.data(origin.index(0, 1)).isValid());
    EXPECT_EQ(site.rowCount(), 3);
    elog_clear(); // the library says each time why the table was refused
}

} // namespace
