// The menus over the headers, the commands on rows, and editing in cells.
#include <orvanetableview.h>

#include <QAction>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QScrollBar>

#include <gtest/gtest.h>

#include <orvanerowview.h>

#include "shown_database.h"
#include "support/message_boxes.h"
#include "support/user.h"

namespace {

enum RowEntry { MarkRow, DeleteRow, ShowRow };
enum ColumnEntry { RemoveColumn, ChangeSelected, ChangeAll };

struct Entries {
    QStringList texts;
    QList<bool> enabled;
};

class HeaderMenus : public testing::Test
{
protected:
    HeaderMenus()
    {
        database.permissions = "r+";
        database.setFontPoints(10);
        ShownDatabase::Rows rows;
        for (int row = 0; row < 50; ++row) {
            rows.push_back({"S" + std::to_string(row), std::to_string(1517875200 + row) + ".25000",
                            std::to_string(row + 1), "2018037", "P"});
        }
        database.files.addTable("arrival", rows);
    }

    OrvaneTableView &shown(OrvaneTableModel &model)
    {
        view = std::make_unique<OrvaneTableView>(database.config);
        view->setModel(&model);
        view->resize(600, 300);
        view->show();
        QApplication::setActiveWindow(view.get());
        settle();
        return *view;
    }
    OrvaneTableView &shown(const QString &table) { return shown(database.table(table)); }

    OrvaneTableModel &model() { return *view->model(); }
    QModelIndex cell(int row, const QString &field)
    {
        return model().index(row, columnNamed(model(), field));
    }
    QString text(int row, const QString &field) { return model().data(cell(row, field)).toString(); }

    // Opens the menu, keeps its entries and leaves it.
    template <typename Open>
    Entries entriesOf(Open open)
    {
        Entries entries;
        User user;
        user.meets<QMenu>([&entries](QMenu &menu) {
            for (const QAction *action : menu.actions()) {
                entries.texts.append(action->text());
                entries.enabled.append(action->isEnabled());
            }
            menu.close();
        });
        open();
        return entries;
    }

    void openRowMenu(int row) { view->showRowContextMenu(QPoint(5, view->rowViewportPosition(row) + 2)); }
    void openColumnMenu(const QString &field)
    {
        const int column = model().indexForColumn(field).column();
        view->showColumnContextMenu(QPoint(view->horizontalHeader()->sectionViewportPosition(column) + 5, 5));
    }

    // Types into the cell's editor. The editor is open afterwards where the value was refused.
    QLineEdit *typeInto(int row, const QString &field, const QString &typed)
    {
        view->setCurrentIndex(cell(row, field));
        view->edit(cell(row, field));
        auto *editor = view->viewport()->findChild<QLineEdit *>();
        if (editor == nullptr) {
            return nullptr;
        }
        editor->selectAll();
        if (typed.isEmpty()) {
            QTest::keyClick(editor, Qt::Key_Delete);
        }
        QTest::keyClicks(editor, typed);
        QTest::keyClick(editor, Qt::Key_Return);
        settle();
        return view->viewport()->findChild<QLineEdit *>();
    }

    ShownDatabase database;
    std::unique_ptr<OrvaneTableView> view;
};

TEST_F(HeaderMenus, OfARowOfATable)
{
    shown("arrival");
    Entries entries = entriesOf([this] { openRowMenu(3); });
    EXPECT_EQ(entries.texts, (QStringList{"Mark Row 3 For Deletion From Table", "Delete Row 3 From View"}));
    EXPECT_EQ(entries.enabled, (QList<bool>{true, false}));
    QMainWindow window;
    OrvaneRowView rowView(database.config, &window);
    view->setOrvaneRowView(&rowView);
    entries = entriesOf([this] { openRowMenu(3); });
    EXPECT_EQ(entries.texts.mid(2), QStringList{"Show Row 3"});
}

TEST_F(HeaderMenus, OfARowOfATableThatCannotBeWritten)
{
    database.permissions = "r";
    shown("arrival");
    EXPECT_EQ(entriesOf([this] { openRowMenu(0); }).enabled, (QList<bool>{false, false}));
}

TEST_F(HeaderMenus, OfARowOfAView)
{
    shown(*database.table("arrival").subset("arid > 10", ""));
    EXPECT_EQ(entriesOf([this] { openRowMenu(0); }).enabled, (QList<bool>{false, true}));
    {
        User user;
        user.choosesEntry(DeleteRow - 1); // the first entry can't be chosen
        openRowMenu(0);
    }
    EXPECT_EQ(model().rowCount(), 39);
    EXPECT_EQ(database.table("arrival").rowCount(), 50);
}

TEST_F(HeaderMenus, MarkAndShowARow)
{
    QMainWindow window;
    OrvaneRowView rowView(database.config, &window);
    shown("arrival");
    view->setOrvaneRowView(&rowView);
    {
        User user;
        user.choosesEntry(1); // of those that can be chosen
        openRowMenu(2);
    }
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(rowView.findChild<QLineEdit *>("rowEntry")->text(), "2");
    {
        User user;
        user.choosesEntry(MarkRow);
        openRowMenu(2);
    }
    EXPECT_EQ(text(2, "sta"), "");
    EXPECT_EQ(model().rowCount(), 50);
    model().crunch();
    EXPECT_EQ(model().rowCount(), 49);
}

TEST_F(HeaderMenus, OfAColumn)
{
    shown("arrival");
    const Entries entries = entriesOf([this] { openColumnMenu("phase"); });
    EXPECT_EQ(entries.texts,
              (QStringList{"Remove Column 'phase' From Display", "Change Selected 'phase' Values...",
                           "Change All 'phase' Values..."}));
    EXPECT_EQ(entries.enabled, (QList<bool>{true, true, true}));
}

TEST_F(HeaderMenus, OfAColumnOfATableWithoutRows)
{
    database.config.configure("show_empty_columns", true);
    shown("event");
    EXPECT_EQ(entriesOf([this] { openColumnMenu("evid"); }).texts.first(),
              "Remove Column 'evid' From Display");
}

TEST_F(HeaderMenus, RemoveAColumn)
{
    shown("arrival");
    User user;
    user.choosesEntry(RemoveColumn);
    openColumnMenu("phase");
    EXPECT_FALSE(view->getFieldNamesVisible().contains("phase"));
}

TEST_F(HeaderMenus, ChangeSelectedValues)
{
    shown("arrival");
    for (const int row : {1, 4}) {
        view->selectionModel()->select(cell(row, "phase"), QItemSelectionModel::Select);
    }
    User user;
    user.choosesEntry(ChangeSelected);
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Get Value for 'phase':");
        EXPECT_GT(dialog.width(), dialog.fontMetrics().horizontalAdvance(dialog.windowTitle() + "mmmmm"))
            << "the title is to be read whole";
        EXPECT_EQ(dialog.labelText(), "Value for 'phase':");
        QTest::keyClicks(dialog.focusWidget(), "S");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    openColumnMenu("phase");
    EXPECT_EQ(text(1, "phase") + text(2, "phase") + text(4, "phase"), "SPS");
}

TEST_F(HeaderMenus, ChangeAllValues)
{
    shown("arrival");
    User user;
    user.choosesEntry(ChangeAll).types("Pn");
    openColumnMenu("phase");
    for (int row = 0; row < 50; ++row) {
        EXPECT_EQ(text(row, "phase"), "Pn") << row;
    }
}

TEST_F(HeaderMenus, ChangeNothingWhenNoValueIsGiven)
{
    shown("arrival");
    const std::string before = TemporaryDatabase::readFile(database.files.tablePath("arrival"));
    view->selectRow(1);
    for (const int entry : {ChangeSelected, ChangeAll}) {
        User user;
        user.choosesEntry(entry).cancels();
        openColumnMenu("phase");
    }
    EXPECT_EQ(TemporaryDatabase::readFile(database.files.tablePath("arrival")), before);
}

// Of a host that keeps nothing: each cell is tried by itself, whatever its column.
TEST_F(HeaderMenus, ChangeTheSelectedCellsOfAllColumnsThatTakeTheValue)
{
    shown("arrival");
    const MessageBoxes boxes;
    for (const char *field : {"sta", "arid"}) {
        view->selectionModel()->select(cell(2, field), QItemSelectionModel::Select);
    }
    User user;
    user.choosesEntry(ChangeSelected).types("ABC");
    openColumnMenu("sta");
    EXPECT_EQ(text(2, "sta"), "ABC");
    EXPECT_EQ(text(2, "arid"), "3");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().startsWith("'ABC' was not stored in 1 cells: "))
        << boxes.texts()[0].toStdString();
}

TEST_F(HeaderMenus, RefuseAnEntryThatIsNotTheirOwn)
{
    shown("arrival");
    const MessageBoxes boxes;
    const auto chooseAnother = [](User &user) {
        user.meets<QMenu>([](QMenu &menu) {
            menu.addAction("Something else");
            QTest::keyClick(&menu, Qt::Key_Up);
            QTest::keyClick(&menu, Qt::Key_Return);
        });
    };
    {
        User user;
        chooseAnother(user);
        openRowMenu(2);
    }
    {
        User user;
        chooseAnother(user);
        openColumnMenu("phase");
    }
    const QString unknown = "Unexpected error: unknown action selected in OrvaneTableView::";
    EXPECT_EQ(boxes.texts(),
              (QStringList{unknown + "showRowContextMenu()", unknown + "showColumnContextMenu()"}));
}

TEST_F(HeaderMenus, TellOnceWhyValuesAreRefused)
{
    shown("arrival");
    const MessageBoxes boxes;
    User user;
    user.choosesEntry(ChangeAll).types("0");
    openColumnMenu("arid");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().startsWith("'0' was not stored in 50 cells: "))
        << boxes.texts()[0].toStdString();
    EXPECT_EQ(text(0, "arid"), "1");
}

TEST_F(HeaderMenus, MarkTheSelectedRows)
{
    shown("arrival");
    view->selectRow(3);
    view->selectionModel()->select(cell(7, "sta"), QItemSelectionModel::Select);
    view->markSelected();
    EXPECT_EQ(text(3, "sta") + text(7, "sta"), "");
    EXPECT_EQ(text(4, "sta"), "S4");
    EXPECT_EQ(model().rowCount(), 50);
}

TEST_F(HeaderMenus, DeleteRowsOfAView)
{
    const auto fresh = [this]() -> OrvaneTableView & {
        return shown(*database.table("arrival").subset("arid > 0", ""));
    };
    fresh().selectRow(3);
    view->deleteSelectedViewRows();
    EXPECT_EQ(model().rowCount(), 49);
    EXPECT_EQ(text(3, "sta"), "S4");

    fresh().selectRow(3);
    view->selectionModel()->select(cell(5, "sta"), QItemSelectionModel::Select);
    view->deleteAllOtherViewRows();
    EXPECT_EQ(model().rowCount(), 2);
    EXPECT_EQ(text(0, "sta") + text(1, "sta"), "S3S5");

    fresh().selectRow(1);
    const int visible = view->rowAt(view->viewport()->height() - 1) + 1;
    ASSERT_LT(visible, 45);
    view->deleteOtherVisibleViewRows();
    EXPECT_EQ(text(0, "sta"), "S1");
    EXPECT_LT(model().rowCount(), 50 - visible + 3);
    EXPECT_GT(model().rowCount(), 50 - visible - 3);
    EXPECT_EQ(text(model().rowCount() - 1, "sta"), "S49");
    EXPECT_EQ(database.table("arrival").rowCount(), 50);
}

TEST_F(HeaderMenus, EditACell)
{
    shown("arrival");
    EXPECT_EQ(typeInto(0, "phase", "S"), nullptr); // not allowed yet
    EXPECT_EQ(text(0, "phase"), "P");
    database.config.configure("allow_edits", true);
    EXPECT_EQ(typeInto(0, "phase", "S"), nullptr);
    EXPECT_EQ(text(0, "phase"), "S");
    EXPECT_EQ(typeInto(0, "time", "02/07/2018 (038) 00:00:00.123450 UTC"), nullptr);
    EXPECT_EQ(text(0, "time"), "02/07/2018 (038) 00:00:00.123450 UTC");
}

TEST_F(HeaderMenus, ARefusedValueKeepsItsEditorAndTellsWhy)
{
    shown("arrival");
    database.config.configure("allow_edits", true);
    QLineEdit *editor = typeInto(0, "arid", "abc");
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "abc");
    const auto *reason = view->viewport()->findChild<QLabel *>("refusal");
    ASSERT_NE(reason, nullptr);
    EXPECT_TRUE(reason->text().contains("abc")) << reason->text().toStdString();
    EXPECT_EQ(text(0, "arid"), "1");
    QTest::keyClick(editor, Qt::Key_Escape);
    settle();
    EXPECT_EQ(view->viewport()->findChild<QLineEdit *>(), nullptr);
    EXPECT_EQ(view->viewport()->findChild<QLabel *>("refusal"), nullptr);
    EXPECT_EQ(text(0, "arid"), "1");
}

} // namespace
