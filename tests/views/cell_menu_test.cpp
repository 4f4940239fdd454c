// The menu over a cell, driven by mouse and keyboard.
#include <orvanetableview.h>

#include <QContextMenuEvent>
#include <QItemSelectionModel>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "shown_database.h"
#include "support/message_boxes.h"
#include "support/user.h"

namespace {

enum Entry { FindBackward, FindForward, Subset };

class CellMenu : public testing::Test
{
protected:
    CellMenu()
    {
        database.setFontPoints(10);
        ShownDatabase::Rows rows;
        for (int row = 0; row < 300; ++row) {
            const std::string number = std::to_string(row);
            const bool isEvery100th = row % 100 == 50; // 50, 150, 250
            rows.push_back({isEvery100th ? "AAK" : "S" + number, std::to_string(1517875200 + row) + ".25000",
                            number, "2018037", row == 7 ? "P'" : "P"});
        }
        database.files.addTable("arrival", rows);
    }

    OrvaneTableView &shown(const QString &table)
    {
        view = std::make_unique<OrvaneTableView>(database.config);
        view->setModel(&database.table(table));
        view->resize(600, 300);
        view->show();
        settle();
        return *view;
    }

    QPoint placeOf(int row, const QString &field)
    {
        const QModelIndex cell = view->model()->index(row, columnNamed(*view->model(), field));
        view->scrollTo(cell);
        return view->visualRect(cell).center();
    }

    // As the toolkit tells of the right button.
    void rightClick(QPoint place)
    {
        QTest::mouseClick(view->viewport(), Qt::RightButton, Qt::NoModifier, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, view->viewport()->mapToGlobal(place));
        QApplication::sendEvent(view->viewport(), &event);
    }

    // As the toolkit tells of the menu key: at the place that the widget gives for it.
    void pressMenuKey()
    {
        const QPoint place = view->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, view->mapToGlobal(place));
        QApplication::sendEvent(view.get(), &event);
    }

    void choose(Entry entry, int row, const QString &field)
    {
        User user;
        user.choosesEntry(entry);
        rightClick(placeOf(row, field));
    }

    // "row field" of each selected cell.
    QStringList selected()
    {
        QStringList cells;
        for (const QModelIndex &cell : view->selectionModel()->selectedIndexes()) {
            cells.append(QString::number(cell.row()) + " " +
                         view->model()->fieldNameForColumnIndex(cell.column()));
        }
        return cells;
    }

    bool isInSight(int row)
    {
        return view->viewport()->rect().intersects(
            view->visualRect(database.table("arrival").indexForCell(row, "sta")));
    }

    ShownDatabase database;
    std::unique_ptr<OrvaneTableView> view;
    MessageBoxes boxes;
};

TEST_F(CellMenu, hasItsEntriesInOrder)
{
    shown("arrival");
    User user;
    user.meets<QMenu>([this](QMenu &menu) {
        QStringList texts;
        for (const QAction *entry : menu.actions()) {
            texts.append(entry->text());
            EXPECT_TRUE(entry->isEnabled());
        }
        EXPECT_EQ(texts, (QStringList{"Find Backward", "Find Forward", "Subset"}));
        EXPECT_TRUE(menu.geometry().contains(view->viewport()->mapToGlobal(placeOf(3, "time"))));
        menu.close();
    });
    rightClick(placeOf(3, "time"));
    settle();
    EXPECT_TRUE(view->findChildren<QMenu *>().isEmpty()) << "a menu for each click would pile up";
}

TEST_F(CellMenu, findsTheNextEqualCellForwardAndSelectsItAlone)
{
    shown("arrival");
    choose(FindForward, 50, "sta");
    EXPECT_EQ(selected(), QStringList{"150 sta"});
    EXPECT_TRUE(isInSight(150));
    choose(FindForward, 150, "sta");
    EXPECT_EQ(selected(), QStringList{"250 sta"});
    EXPECT_TRUE(isInSight(250));
}

TEST_F(CellMenu, findsTheNextEqualCellBackward)
{
    shown("arrival");
    choose(FindBackward, 250, "sta");
    EXPECT_EQ(selected(), QStringList{"150 sta"});
    EXPECT_TRUE(isInSight(150));
    choose(FindBackward, 20, "phase");
    EXPECT_EQ(selected(), QStringList{"19 phase"});
}

TEST_F(CellMenu, leavesSelectionAndPlaceAloneWhenNothingIsFound)
{
    shown("arrival");
    const QPoint last = placeOf(250, "sta");
    view->selectionModel()->select(view->model()->index(248, 3), QItemSelectionModel::ClearAndSelect);
    User user;
    user.choosesEntry(FindForward);
    const int place = view->verticalScrollBar()->value();
    view->showCellContextMenu(last);
    EXPECT_EQ(selected(), QStringList{"248 arid"});
    EXPECT_EQ(view->verticalScrollBar()->value(), place);

    user.choosesEntry(FindBackward);
    view->showCellContextMenu(placeOf(50, "sta"));
    EXPECT_EQ(selected(), QStringList{"248 arid"});
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(CellMenu, findsNothingForAValueWithAQuoteAndSaysNoMoreThanABeep)
{
    shown("arrival");
    const QPoint place = placeOf(7, "phase");
    view->selectionModel()->clear();
    User user;
    user.choosesEntry(FindForward);
    view->showCellContextMenu(place);
    EXPECT_TRUE(selected().isEmpty());
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(CellMenu, goesOnWithTheKeyboardFromTheCellThatWasFound)
{
    shown("arrival");
    view->setCurrentIndex(database.table("arrival").indexForCell(50, "sta"));
    for (const int found : {150, 250}) {
        User user;
        user.choosesEntry(FindForward);
        pressMenuKey();
        EXPECT_EQ(selected(), QStringList{QString::number(found) + " sta"});
        EXPECT_EQ(view->currentIndex().row(), found);
    }
    User user;
    user.choosesEntry(FindBackward);
    pressMenuKey();
    EXPECT_EQ(selected(), QStringList{"150 sta"});
}

TEST_F(CellMenu, findsInTheOrderThatIsShown)
{
    shown("arrival");
    view->sortByColumn(database.table("arrival").indexForColumn("arid").column(), Qt::DescendingOrder);
    settle();
    const int first = 299 - 250; // where the last AAK has come to stand
    ASSERT_EQ(view->model()->index(first, 1).data().toString(), "AAK");
    choose(FindForward, first, "sta");
    EXPECT_EQ(selected(), QStringList{"149 arrival.sta"});
}

TEST_F(CellMenu, findsNumbersAndTimes)
{
    database.files.addTable("arrival", {{"AAK", "1517875201.50000", "1", "2018037", "P"},
                                        {"AAK", "1517875202.50000", "2", "2018038", "P"},
                                        {"AAK", "1517875201.50000", "2", "2018037", "P"}});
    shown("arrival");
    choose(FindForward, 0, "time");
    EXPECT_EQ(selected(), QStringList{"2 time"});
    choose(FindForward, 1, "arid");
    EXPECT_EQ(selected(), QStringList{"2 arid"});
    choose(FindBackward, 2, "jdate");
    EXPECT_EQ(selected(), QStringList{"0 jdate"});
    database.config.configure("show_readable_times", false);
    choose(FindForward, 0, "time");
    EXPECT_EQ(selected(), QStringList{"2 time"});
}

TEST_F(CellMenu, findsInTheColumnUnderTheMouseAlsoWhereAnotherHasItsName)
{
    database.files.addTable("assoc", {{"0", "7", "X"}, {"1", "7", "Y"}, {"2", "7", "X"}, {"3", "7", "S0"}});
    OrvaneTableModel *joined =
        database.open().getThetaJoin("arrival", "assoc", "arrival.arid == assoc.arid", "both");
    ASSERT_EQ(joined->rowCount(), 4);
    shown("both");
    choose(FindForward, 0, "assoc.sta");
    EXPECT_EQ(selected(), QStringList{"2 assoc.sta"});
    choose(FindForward, 0, "arrival.sta");
    EXPECT_EQ(selected(), QStringList{"0 arrival.sta"}) << "S0 is in the other column only";
}

TEST_F(CellMenu, asksForASubsetOfTheValueUnderTheMouse)
{
    shown("arrival");
    QSignalSpy asked(view.get(), &OrvaneTableView::subsetRequested);
    choose(Subset, 3, "sta");
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.last(), (QVariantList{"sta", "S3"}));
    choose(Subset, 12, "arid");
    EXPECT_EQ(asked.last(), (QVariantList{"arid", "12"}));
    database.config.configure("show_readable_times", false);
    choose(Subset, 2, "time");
    EXPECT_EQ(asked.last().last().toString().toDouble(), 1517875202.25);
}

TEST_F(CellMenu, asksForASubsetByAReadableTimeThatCanBeReadBack)
{
    shown("arrival");
    QSignalSpy asked(view.get(), &OrvaneTableView::subsetRequested);
    choose(Subset, 2, "time");
    ASSERT_EQ(asked.count(), 1);
    const QString value = asked.last().last().toString();
    OrvaneTableModel *subset = database.table("arrival").subset("time == '" + value + "'", "");
    ASSERT_EQ(subset->rowCount(), 1) << value.toStdString();
    EXPECT_EQ(subset->index(0, 3).data().toString(), "2");
}

TEST_F(CellMenu, givesAnEmptyValueForANull)
{
    shown("arrival");
    database.config.configure("show_empty_columns", true);
    view->setFieldNamesVisible({"auth", "sta"});
    QSignalSpy asked(view.get(), &OrvaneTableView::subsetRequested);
    choose(Subset, 3, "auth");
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.last(), (QVariantList{"auth", ""}));
    database.config.configure("show_raw_nulls", true);
    choose(Subset, 3, "auth");
    EXPECT_EQ(asked.last(), (QVariantList{"auth", "-"}));
}

TEST_F(CellMenu, offersNothingWhereThereIsNoCell)
{
    shown("event");
    User user;
    user.meets<QMenu>([](QMenu &menu) {
        EXPECT_EQ(menu.actions().size(), 3);
        for (const QAction *entry : menu.actions()) {
            EXPECT_FALSE(entry->isEnabled());
        }
        menu.close();
    });
    rightClick({40, 40});
}

TEST_F(CellMenu, doesNothingWhenNothingIsChosen)
{
    shown("arrival");
    QSignalSpy asked(view.get(), &OrvaneTableView::subsetRequested);
    User user;
    user.meets<QMenu>([](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_Escape); });
    view->showCellContextMenu(placeOf(3, "sta"));
    EXPECT_EQ(asked.count(), 0);
    EXPECT_TRUE(selected().isEmpty());
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(CellMenu, refusesAnEntryThatIsNotItsOwn)
{
    shown("arrival");
    User user;
    user.meets<QMenu>([](QMenu &menu) {
        menu.addAction("Something else");
        QTest::keyClick(&menu, Qt::Key_Up);
        QTest::keyClick(&menu, Qt::Key_Return);
    });
    view->showCellContextMenu(placeOf(3, "sta"));
    EXPECT_EQ(boxes.texts(), QStringList{"Unexpected error: unknown action selected in "
                                         "OrvaneTableView::showCellContextMenu()"});
}

TEST_F(CellMenu, survivesTheEndOfTheDatabaseWhileItIsOpen)
{
    shown("arrival");
    QSignalSpy asked(view.get(), &OrvaneTableView::subsetRequested);
    User user;
    user.meets<QMenu>([this](QMenu &menu) {
        database.model->close();
        QTest::keyClick(&menu, Qt::Key_Down);
        QTest::keyClick(&menu, Qt::Key_Return);
    });
    view->showCellContextMenu(placeOf(3, "sta"));
    EXPECT_EQ(asked.count(), 0);
}

TEST_F(CellMenu, survivesTheEndOfItsViewWhileItIsOpen)
{
    shown("arrival");
    User user;
    user.meets<QMenu>([this](QMenu &) { view.reset(); });
    view->showCellContextMenu(placeOf(3, "sta"));
    EXPECT_EQ(view, nullptr);
}

TEST_F(CellMenu, doesNothingWithoutAModel)
{
    OrvaneTableView empty(database.config);
    empty.show();
    User user;
    user.meets<QMenu>([](QMenu &menu) { menu.close(); });
    empty.showCellContextMenu({10, 10});
}

} // namespace
