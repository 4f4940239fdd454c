#include <orvanetableview.h>

#include <QFontMetrics>
#include <QHeaderView>
#include <QImage>
#include <QItemSelectionModel>
#include <QPixmap>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "shown_database.h"

namespace {

using Names = QList<QString>;

class TableView : public testing::Test
{
protected:
    TableView() { database.setFontPoints(10); }

    OrvaneTableView &shown(const QString &table)
    {
        view = std::make_unique<OrvaneTableView>(database.config);
        view->setModel(&database.table(table));
        return *view;
    }

    ShownDatabase database;
    std::unique_ptr<OrvaneTableView> view;
};

TEST_F(TableView, registersItsDefaultsAndLeavesWhatIsSet)
{
    database.config.configure("show_raw_nulls", true);
    const OrvaneTableView made(database.config);
    EXPECT_EQ(database.config["allow_edits"], QVariant(false));
    EXPECT_EQ(database.config["alternate_row_colors"], QVariant(true));
    EXPECT_EQ(database.config["show_empty_columns"], QVariant(false));
    EXPECT_EQ(database.config["show_readable_times"], QVariant(true));
    EXPECT_EQ(database.config["show_raw_nulls"], QVariant(true));
    EXPECT_EQ(database.config["show_tooltips"], QVariant(true));
    EXPECT_EQ(database.config["background_blank_color"], QVariant("light yellow"));
    EXPECT_EQ(database.config["background_null_color"], QVariant("light gray"));
    EXPECT_EQ(database.config["time_string_format"], QVariant("%D (%j) %H:%M:%S.%u %Z"));
    EXPECT_EQ(database.config["local_time_zone"], QVariant(QString()));
}

TEST_F(TableView, hidesColumnsWithoutValuesAndTheRecordNumber)
{
    OrvaneTableView &site = shown("site");
    EXPECT_EQ(site.getFieldNamesVisible(), (Names{"sta", "ondate", "lat", "lon", "staname"}));
    EXPECT_TRUE(site.isColumnHidden(0));
}

TEST_F(TableView, showsEveryColumnButTheRecordNumberWhenEmptyOnesAreWanted)
{
    database.config.configure("show_empty_columns", true);
    OrvaneTableView &site = shown("site");
    EXPECT_EQ(site.getFieldNamesVisible(), database.table("site").getTableFields());
    EXPECT_TRUE(site.isColumnHidden(0));
}

TEST_F(TableView, tellsTheColumnsInTheOrderToWhichTheyWereDragged)
{
    OrvaneTableView &site = shown("site");
    QHeaderView &header = *site.horizontalHeader();
    const int lat = database.table("site").indexForColumn("lat").column();
    header.moveSection(header.visualIndex(lat), 0);
    EXPECT_EQ(site.getFieldNamesVisible(), (Names{"lat", "sta", "ondate", "lon", "staname"}));
    EXPECT_TRUE(header.sectionsMovable());
}

TEST_F(TableView, showsTheNamedColumnsInTheOrderOfTheirNames)
{
    OrvaneTableView &site = shown("site");
    site.setFieldNamesVisible({"staname", "offdate", "sta"});
    EXPECT_EQ(site.getFieldNamesVisible(), (Names{"staname", "offdate", "sta"}));
    site.setFieldNamesVisible({"sta", "lat"});
    EXPECT_EQ(site.getFieldNamesVisible(), (Names{"sta", "lat"}));
}

TEST_F(TableView, passesOverUnknownColumnNames)
{
    OrvaneTableView &site = shown("site");
    site.setFieldNamesVisible({"sta", "nonsense", "lat"});
    EXPECT_EQ(site.getFieldNamesVisible(), (Names{"sta", "lat"}));
    EXPECT_TRUE(site.isColumnHidden(0));
}

TEST_F(TableView, showsNothingAfterTheLastColumnIsRemoved)
{
    OrvaneTableView &site = shown("site");
    site.setFieldNamesVisible({"sta"});
    site.setFieldNamesVisible({});
    EXPECT_TRUE(site.getFieldNamesVisible().isEmpty());
}

TEST_F(TableView, saysSoWhereThereIsNothingToShow)
{
    OrvaneTableView &site = shown("site");
    site.resize(400, 300);
    const auto drawn = [&site] {
        const QImage picture = site.viewport()->grab().toImage();
        const QRgb background = picture.pixel(0, 0);
        int pixels = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                pixels += picture.pixel(x, y) != background;
            }
        }
        return pixels;
    };
    site.setFieldNamesVisible({});
    EXPECT_GT(drawn(), 0);
}

TEST_F(TableView, givesColumnsTheWidthOfTheModelsHintAndStretchesTheLast)
{
    OrvaneTableView &site = shown("site");
    OrvaneTableModel &model = database.table("site");
    for (const char *name : {"sta", "ondate", "lat", "lon"}) {
        const int column = model.indexForColumn(name).column();
        const int hint = model.headerData(column, Qt::Horizontal, Qt::SizeHintRole).toSize().width();
        EXPECT_EQ(site.columnWidth(column), std::max(hint, 60)) << name;
    }
    EXPECT_TRUE(site.horizontalHeader()->stretchLastSection());
    EXPECT_EQ(site.horizontalHeader()->minimumSectionSize(), 60);
}

TEST_F(TableView, givesColumnsTheirWidthAgainWhenTheLayoutChanges)
{
    OrvaneTableView &site = shown("site");
    const int column = database.table("site").indexForColumn("lat").column();
    const int width = site.columnWidth(column);
    site.setColumnWidth(column, width + 100);
    emit database.table("site").layoutChanged();
    EXPECT_EQ(site.columnWidth(column), width);
}

TEST_F(TableView, makesRowsAsHighAsTheFontAlsoBelowTheMinimumOfTheStyle)
{
    for (const int points : {4, 10, 40}) {
        database.setFontPoints(points);
        OrvaneTableView &site = shown("site");
        EXPECT_EQ(site.rowHeight(0), QFontMetrics(site.font()).height()) << points;
        EXPECT_EQ(site.font().pointSize(), points);
        EXPECT_EQ(site.verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    }
}

TEST_F(TableView, followsFontAndRowColoursOfTheConfiguration)
{
    OrvaneTableView &site = shown("site");
    EXPECT_TRUE(site.alternatingRowColors());
    database.config.configure("alternate_row_colors", false);
    EXPECT_FALSE(site.alternatingRowColors());
    for (const int points : {21, 5, 14}) {
        database.setFontPoints(points);
        EXPECT_EQ(site.font().pointSize(), points);
        EXPECT_EQ(site.rowHeight(1), QFontMetrics(site.font()).height()) << points;
    }
}

TEST_F(TableView, putsRowsCloserTogetherOnTheScreenWhenTheFontShrinks)
{
    database.setFontPoints(30);
    OrvaneTableView &site = shown("site");
    site.resize(600, 400);
    site.show();
    settle();
    database.setFontPoints(8);
    settle();
    EXPECT_EQ(site.rowAt(QFontMetrics(site.font()).height() + 1), 1);
}

TEST_F(TableView, keepsTheModelsOrderWhenItGetsItsModel)
{
    OrvaneTableView &site = shown("site");
    EXPECT_TRUE(site.isSortingEnabled());
    EXPECT_EQ(site.model()->data(site.model()->index(0, 1)).toString(), "AAK");
    EXPECT_EQ(site.model()->data(site.model()->index(1, 1)).toString(), "KONO");
}

TEST_F(TableView, onlyRemembersANullModel)
{
    OrvaneTableView &site = shown("site");
    OrvaneTableModel *before = site.model();
    EXPECT_EQ(before, &database.table("site"));
    site.setModel(nullptr);
    EXPECT_EQ(site.model(), nullptr);
    EXPECT_EQ(site.QTableView::model(), before);
    EXPECT_TRUE(site.getFieldNamesVisible().isEmpty());
    site.resizeColumns();
    site.scrollToRow(1);
    site.scrollToColumn("sta");
    site.scrollToCell(1, "sta");
}

TEST_F(TableView, tellsThatItsModelIsGone)
{
    OrvaneTableModel *model = new OrvaneTableModel(nullptr, nullptr, database.config);
    OrvaneTableView lonely(database.config);
    lonely.setModel(model);
    QSignalSpy unset(&lonely, SIGNAL(modelUnset(OrvaneTableView *)));
    delete model;
    ASSERT_EQ(unset.count(), 1);
    EXPECT_EQ(unset.first().first().value<OrvaneTableView *>(), &lonely);
    EXPECT_EQ(lonely.model(), nullptr);
    lonely.reconfigure();
    lonely.show();
    settle();
}

TEST_F(TableView, hearsOnlyOfItsPresentModel)
{
    OrvaneTableModel *first = new OrvaneTableModel(nullptr, nullptr, database.config);
    OrvaneTableView changing(database.config);
    changing.setModel(first);
    changing.setModel(&database.table("site"));
    QSignalSpy unset(&changing, SIGNAL(modelUnset(OrvaneTableView *)));
    delete first;
    EXPECT_EQ(unset.count(), 0);
    EXPECT_EQ(changing.model(), &database.table("site"));
}

class LongTableView : public TableView
{
protected:
    LongTableView()
    {
        ShownDatabase::Rows rows;
        for (int row = 0; row < 500; ++row) {
            rows.push_back(
                {"S" + std::to_string(row), "2008001", "2010001", "1.0000", "2.0000", "3.0000", "name"});
        }
        database.files.addTable("site", rows);
        OrvaneTableView &site = shown("site");
        site.resize(400, 200);
        site.show();
        settle();
    }

    bool isInSight(int row, const QString &field)
    {
        const QModelIndex cell = database.table("site").indexForCell(row, field);
        return view->viewport()->rect().intersects(view->visualRect(cell));
    }
};

TEST_F(LongTableView, scrollsToARow)
{
    EXPECT_FALSE(isInSight(400, "sta"));
    view->scrollToRow(400);
    EXPECT_TRUE(isInSight(400, "sta"));
}

TEST_F(LongTableView, scrollsToAColumn)
{
    EXPECT_FALSE(isInSight(0, "staname"));
    view->scrollToColumn("staname");
    EXPECT_TRUE(isInSight(0, "staname"));
}

TEST_F(LongTableView, scrollsToACellAndSelectsItAlone)
{
    view->selectRow(3);
    view->scrollToCell(250, "lon");
    EXPECT_TRUE(isInSight(250, "lon"));
    const QModelIndexList selected = view->selectionModel()->selectedIndexes();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected.first().row(), 250);
    EXPECT_EQ(selected.first().column(), database.table("site").indexForColumn("lon").column());
}

TEST_F(LongTableView, survivesRowsAndColumnsThatDontExist)
{
    view->scrollToRow(100000);
    view->scrollToRow(-1);
    view->scrollToColumn("nonsense");
    view->scrollToCell(100000, "nonsense");
    EXPECT_TRUE(isInSight(0, "sta"));
}

} // namespace
