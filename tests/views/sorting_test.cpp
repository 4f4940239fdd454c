// Sorting by a click on a header.
#include <orvanetableview.h>

#include <QHeaderView>
#include <QTest>

#include <gtest/gtest.h>

#include <qdbptr.h>
#include <qlistchooserdialog.h>

#include "database_window.h"
#include "support/message_boxes.h"
#include "support/user.h"

namespace {

using Names = QStringList;

class SortingByHeader : public DatabaseWindow
{
protected:
    SortingByHeader()
    {
        database.setFontPoints(10);
        database.files.addTable("arrival", {{"KONO", "1517875300.50000", "2", "2018037", "P"},
                                            {"AAK", "1517875201.50000", "10", "2018037", "P"},
                                            {"AAK", "1517875260.25000", "3", "2018037", "S"},
                                            {"TUC", "1517875400.00000", "4", "2018037", "P"}});
        window.setModel(&database.open("arrival"));
        window.resize(900, 400);
        window.show();
        settle();
    }

    OrvaneTableView &view() { return *window.getCurrentTableView(); }
    QHeaderView &header() { return *view().horizontalHeader(); }
    int columnOf(const QString &field) { return columnNamed(*view().model(), field); }

    void clickHeader(const QString &field)
    {
        const int section = columnOf(field);
        const QPoint place(header().sectionViewportPosition(section) + header().sectionSize(section) / 2,
                           header().height() / 2);
        QTest::mouseClick(header().viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    Names shown(const QString &field) { return shownValues(*view().model(), field); }

    bool isMarked(const QString &field, Qt::SortOrder order)
    {
        return header().isSortIndicatorShown() && header().sortIndicatorSection() == columnOf(field) &&
               header().sortIndicatorOrder() == order;
    }
};

TEST_F(SortingByHeader, marksNoColumnInTheBeginning)
{
    EXPECT_EQ(shown("arid"), (Names{"2", "10", "3", "4"}));
    EXPECT_TRUE(header().isSortIndicatorShown());
    EXPECT_EQ(header().sortIndicatorSection(), 0) << "which is never in sight";
    EXPECT_TRUE(view().isSortingEnabled());
}

TEST_F(SortingByHeader, sortsUpwardsAndThenDownwards)
{
    clickHeader("arid");
    EXPECT_EQ(shown("arid"), (Names{"2", "3", "4", "10"}));
    EXPECT_TRUE(isMarked("arid", Qt::AscendingOrder));
    clickHeader("arid");
    EXPECT_EQ(shown("arid"), (Names{"10", "4", "3", "2"}));
    EXPECT_TRUE(isMarked("arid", Qt::DescendingOrder));
    clickHeader("sta");
    EXPECT_EQ(shown("sta"), (Names{"AAK", "AAK", "KONO", "TUC"}));
    EXPECT_TRUE(isMarked("sta", Qt::AscendingOrder));
}

TEST_F(SortingByHeader, keepsTheSortedViewOutOfSight)
{
    const Names before = tabTexts(tables());
    for (const char *field : {"sta", "time", "sta"}) {
        clickHeader(field);
        EXPECT_EQ(views().count(), 0);
        EXPECT_EQ(database.model->getViewNames().size(), 1) << "the one before has gone";
        EXPECT_EQ(tabTexts(tables()), before);
        EXPECT_EQ(window.getCurrentTableModel()->getTableName(), "arrival");
    }
}

TEST_F(SortingByHeader, keepsTheColumnsThatAreShownAndTheirOrder)
{
    view().setFieldNamesVisible({"phase", "sta", "arid"});
    clickHeader("arid");
    clickHeader("sta");
    EXPECT_EQ(view().getFieldNamesVisible(),
              (QList<QString>{"arrival.phase", "arrival.sta", "arrival.arid"}));
    EXPECT_TRUE(view().isColumnHidden(0));
}

TEST_F(SortingByHeader, sortsEachTableForItself)
{
    clickHeader("arid");
    window.setFocusTable("site");
    EXPECT_EQ(header().sortIndicatorSection(), 0);
    clickHeader("lat");
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO"}));
    window.setFocusTable("arrival");
    EXPECT_TRUE(isMarked("arid", Qt::AscendingOrder));
    EXPECT_EQ(shown("arid"), (Names{"2", "3", "4", "10"}));
}

TEST_F(SortingByHeader, sortsADerivedView)
{
    database.config.configure("request_view_names", false);
    window.showContextSubset("phase", "P");
    clickHeader("arid");
    EXPECT_EQ(shown("arid"), (Names{"2", "4", "10"}));
    EXPECT_EQ(views().count(), 1);
    ASSERT_EQ(database.model->getViewNames().size(), 2);
    window.closeViewsTab(0);
    EXPECT_TRUE(database.model->getViewNames().isEmpty()) << "the view shown in place of it goes, too";
}

TEST_F(SortingByHeader, derivesFromTheTableAndNotFromWhatIsShownInItsPlace)
{
    database.config.configure("request_view_names", false);
    clickHeader("arid");
    window.showContextSubset("phase", "P");
    EXPECT_EQ(shown("arid"), (Names{"2", "10", "4"}));
}

// As after a sort that was cancelled or found no memory.
class UnsortableTable : public OrvaneTableModel
{
public:
    using OrvaneTableModel::OrvaneTableModel;
    void sort(int column, Qt::SortOrder /*order*/) override { asked.append(column); }
    QList<int> asked;
};

TEST_F(SortingByHeader, marksNoColumnByWhichTheTableCantBeSorted)
{
    UnsortableTable table(database.model.get(), database.model->getQDbptr()->lookupTable("arrival"),
                          database.config);
    OrvaneTableView unsorted(database.config);
    unsorted.setModel(&table);
    unsorted.show();
    QHeaderView &columns = *unsorted.horizontalHeader();
    table.asked.clear();
    const QPoint place(columns.sectionViewportPosition(3) + 20, columns.height() / 2);
    QTest::mouseClick(columns.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    EXPECT_EQ(table.asked.value(0), 3);
    EXPECT_EQ(columns.sortIndicatorSection(), 0);
}

TEST_F(SortingByHeader, letsCommandsTakeFieldsAsTheSortedTableNamesThem)
{
    database.config.configure("request_view_names", false);
    MessageBoxes boxes;
    clickHeader("arid");
    emit view().subsetRequested(view().model()->fieldNameForColumnIndex(columnOf("sta")), "AAK");
    EXPECT_EQ(shown("arid"), (Names{"10", "3"}));

    window.setFocusTable("arrival");
    User user;
    const auto choosePhase = [](QListChooserDialog &dialog) {
        auto *offered = dialog.findChild<QListWidget *>("fields");
        offered->setCurrentItem(offered->findItems("arrival.phase", Qt::MatchExactly).value(0));
        QTest::keyClick(offered, Qt::Key_Return);
        QTest::keyClick(offered, Qt::Key_Return);
    };
    user.meets<QListChooserDialog>(choosePhase);
    window.showSort();
    EXPECT_EQ(shown("arid"), (Names{"2", "10", "4", "3"}));

    window.setFocusTable("arrival");
    user.meets<QListChooserDialog>(choosePhase);
    window.showGroup();
    EXPECT_EQ(shown("phase"), (Names{"P", "S"}));
    EXPECT_TRUE(boxes.texts().isEmpty()) << boxes.texts().join('\n').toStdString();
}

TEST_F(SortingByHeader, tellsEqualNamesOfAJoinedViewApart)
{
    database.files.addTable("assoc", {{"2", "7", "AAK"}, {"3", "7", "ZZZ"}, {"4", "7", "MMM"}});
    database.model->checkForUpdates();
    OrvaneTableModel *joined =
        database.model->getThetaJoin("arrival", "assoc", "arrival.arid == assoc.arid", "both");
    window.setFocusTable("both");
    EXPECT_TRUE(view().getFieldNamesVisible().contains("arrival.sta"));
    EXPECT_TRUE(view().getFieldNamesVisible().contains("assoc.sta"));
    const int second = joined->indexForColumn("assoc.sta").column();
    EXPECT_EQ(joined->headerData(second, Qt::Horizontal).toString(), "sta");
    view().sortByColumn(second, Qt::DescendingOrder);
    EXPECT_EQ(shown("assoc.sta"), (Names{"ZZZ", "MMM", "AAK"}));
    EXPECT_EQ(shown("arrival.sta"), (Names{"AAK", "TUC", "KONO"}));
    view().setFieldNamesVisible({"assoc.sta", "arrival.sta"});
    EXPECT_EQ(view().getFieldNamesVisible(), (QList<QString>{"assoc.sta", "arrival.sta"}));
}

TEST_F(SortingByHeader, marksNoColumnOfADatabaseThatWasClosed)
{
    clickHeader("arid");
    database.model->close();
    EXPECT_EQ(header().sortIndicatorSection(), 0);
}

TEST_F(SortingByHeader, takesTheMarkBackWhenTheSortedViewIsDeleted)
{
    clickHeader("arid");
    database.model->deleteView(view().model()->getFacadeTableName());
    EXPECT_EQ(shown("arid"), (Names{"2", "10", "3", "4"}));
    EXPECT_EQ(header().sortIndicatorSection(), 0);
}

TEST_F(SortingByHeader, leavesAnotherModelItsOrder)
{
    clickHeader("arid");
    view().setModel(&database.table("site"));
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO"}));
    EXPECT_EQ(header().sortIndicatorSection(), 0);
    EXPECT_EQ(database.table("site").getFacadeTableName(), "site");
}

TEST_F(SortingByHeader, followsTheTableThatGrows)
{
    clickHeader("arid");
    database.files.appendRows("arrival", {{"ANTO", "1517875500.00000", "1", "2018037", "P"}});
    database.model->checkForUpdates();
    settle();
    EXPECT_EQ(view().model()->rowCount(), database.model->getTableModel("arrival")->rowCount());
    clickHeader("arid");
    EXPECT_EQ(shown("arid"), (Names{"10", "4", "3", "2", "1"}));
}

} // namespace
