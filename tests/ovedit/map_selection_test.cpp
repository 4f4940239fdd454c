#include <QItemSelectionModel>
#include <QTabWidget>

#include <orvane/plot.h>

#include "row_records.h"
#include "running_program.h"

namespace {

// A window on a database of five origins, and a map on its products page.
class MapSelectionTest : public RunningProgram
{
protected:
    using Records = QVector<qint64>;

    MapSelectionTest()
    {
        origins->addTable("origin", {{"10.0", "10.0", "5.0", "100.0", "4"},
                                     {"20.0", "20.0", "5.0", "200.0", "2"},
                                     {"-999.0", "-999.0", "5.0", "300.0", "5"},
                                     {"-30.0", "30.0", "5.0", "400.0", "1"},
                                     {"0.0", "0.0", "5.0", "500.0", "3"}});
        window = program.openDatabase(QString::fromStdString(origins->path()), "r", nullptr);
    }

    // As the command that shows the map does.
    OvEventMap &shownMap()
    {
        auto *page = new QWidget;
        auto *map = new OvEventMap(page, true, true);
        auto *events = new OvEventView;
        events->configure("dbname", origins->path().c_str());
        map->attach(events);
        QTabWidget *products = window->page(2);
        products->setCurrentIndex(products->addTab(page, "Events Map"));
        window->view()->showStackItem(2);
        map->resize(600, 500);
        map->complete();
        return *map;
    }

    OrvaneTableView &table() const
    {
        for (OrvaneTableView *found : window->view()->findChildren<OrvaneTableView *>()) {
            if (found->model()->getTableName() == "origin") {
                return *found;
            }
        }
        throw std::runtime_error("no table of origins");
    }

    Records selectedRows() const
    {
        Records rows;
        for (const QModelIndex &index : table().selectionModel()->selectedRows(1)) {
            rows.append(index.row());
        }
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    static void selectCell(OrvaneTableView &view, int row, int column)
    {
        view.selectionModel()->select(view.model()->index(row, column), QItemSelectionModel::Select);
    }

    std::unique_ptr<TemporaryDatabase> origins = TemporaryDatabase::ofPublicStandard();
    MainWindow *window = nullptr;
};

} // namespace

TEST_F(MapSelectionTest, rowsFollowTheMap)
{
    OvEventMap &map = shownMap();
    emit map.recordsSelected({1, 3, 4});
    EXPECT_EQ(selectedRows(), Records({1, 3, 4}));
    emit map.recordsSelected({0});
    EXPECT_EQ(selectedRows(), Records({0}));
    emit map.recordsSelected({});
    EXPECT_EQ(selectedRows(), Records());
}

TEST_F(MapSelectionTest, theMapFollowsRows)
{
    selectCell(table(), 4, 2);
    OvEventMap &map = shownMap();
    EXPECT_EQ(map.selectedRecords(), Records({4})); // what is selected when it opens
    selectCell(table(), 1, 1);
    selectCell(table(), 1, 3);
    selectCell(table(), 2, 3); // without a place on the map
    EXPECT_EQ(map.selectedRecords(), Records({1, 2, 4}));
    table().clearSelection();
    EXPECT_EQ(map.selectedRecords(), Records());
}

TEST_F(MapSelectionTest, neitherAnswersTheOther)
{
    OvEventMap &map = shownMap();
    selectCell(table(), 2, 2);
    selectCell(table(), 3, 2);
    EXPECT_EQ(table().selectionModel()->selectedIndexes().size(), 2); // still cells, no rows
    map.setSelectedRecords({0});
    EXPECT_EQ(table().selectionModel()->selectedIndexes().size(), 2);
}

TEST_F(MapSelectionTest, rowsOfASortedTableAreFoundByTheirRecords)
{
    OvEventMap &map = shownMap();
    const int column = table().model()->getTableFields().indexOf("orid") + 1;
    table().model()->sort(column, Qt::AscendingOrder);
    ASSERT_NE(table().model()->getFacadeTableName(), "origin");
    ASSERT_EQ(table().model()->data(table().model()->index(0, column)).toString().trimmed(), "1");
    emit map.recordsSelected({0, 3}); // orids 4 and 1
    EXPECT_EQ(selectedRows(), Records({0, 3}));
    table().clearSelection();
    selectCell(table(), 1, 2); // orid 2
    EXPECT_EQ(map.selectedRecords(), Records({1}));
    table().model()->sort(column, Qt::DescendingOrder);
    EXPECT_EQ(map.selectedRecords(), Records({1})); // the selection goes where its record goes
}

TEST_F(MapSelectionTest, anActivatedEventIsShownInTheTable)
{
    OvEventMap &map = shownMap();
    emit map.recordActivated(3);
    EXPECT_EQ(window->view()->getCurrentStackIndex(), 0);
    EXPECT_EQ(window->view()->getFocusTableName(), "origin");
    EXPECT_EQ(selectedRows(), Records({3}));
}

TEST_F(MapSelectionTest, aMapThatIsClosedIsForgottenAndAnotherFollowed)
{
    shownMap();
    window->view()->closeProductsTab(0);
    settle();
    selectCell(table(), 1, 1);
    OvEventMap &map = shownMap();
    EXPECT_EQ(map.selectedRecords(), Records({1}));
    emit map.recordsSelected({4});
    EXPECT_EQ(selectedRows(), Records({4}));
}

TEST_F(MapSelectionTest, aDatabaseWithoutOriginsLeavesTheMapAlone)
{
    window = &opened();
    OvEventMap &map = shownMap();
    emit map.recordsSelected({1});
    emit map.recordActivated(1);
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(MapSelectionTest, equalRecordsStandForEachOtherInTheirOrder)
{
    origins->addTable("origin", {{"1.0", "1.0"}, {"1.0", "1.0"}, {"0.0", "1.0"}});
    Dbptr database;
    ASSERT_EQ(dbopen_database(origins->path().c_str(), "r", &database), 0);
    const Dbptr origin = dblookup(database, nullptr, "origin", nullptr, nullptr);
    Tbl *fields = newtbl(1);
    char name[] = "lat";
    pushtbl(fields, name);
    const Dbptr sorted = dbsort(origin, fields, 0, nullptr);
    freetbl(fields, nullptr);
    EXPECT_EQ(recordsOfRows(sorted, origin), (std::vector<std::int64_t>{2, 0, 1}));
    OVdbclose(database);
}
