// Tables that other programs change while they are looked at and edited.
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QScrollBar>
#include <QTest>

#include <filesystem>
#include <gtest/gtest.h>

#include <orvane/db.h>
#include <orvanerowview.h>
#include <orvanetableview.h>

#include "shown_database.h"
#include "support/message_boxes.h"

namespace {

using Rows = ShownDatabase::Rows;

class ChangingTable : public testing::Test
{
protected:
    ChangingTable()
    {
        database.permissions = "r+";
        database.setFontPoints(10);
        database.config.configure("allow_edits", true);
        database.config.configure("show_empty_columns", true);
        database.files.addTable("event", records());
        view.setModel(&events());
        view.resize(600, 300);
        view.show();
        QApplication::setActiveWindow(&view);
        settle();
    }

    static Rows records(int from = 1, int to = 60)
    {
        Rows rows;
        for (int id = from; id <= to; ++id) {
            rows.push_back({std::to_string(id), std::to_string(1000 - id), "me"});
        }
        return rows;
    }

    OrvaneTableModel &events() { return database.table("event"); }
    void check()
    {
        database.model->checkForUpdates();
        settle();
    }
    // Another program puts another file in the table's place.
    void replace(const Rows &rows)
    {
        std::filesystem::rename(database.files.tablePath("event"), database.files.tablePath("old"));
        database.files.addTable("event", rows);
    }
    void edit(const Rows &rows) { database.files.addTable("event", rows); }

    QString id(int row) { return events().index(row, 1).data().toString(); }
    QString currentId() { return id(view.currentIndex().row()); }
    int topRow() { return view.rowAt(0); }

    QLineEdit &typing(int row, const QString &field, const QString &text)
    {
        const QModelIndex cell = events().index(row, columnNamed(events(), field));
        view.setCurrentIndex(cell);
        view.edit(cell);
        QLineEdit &editor = *view.viewport()->findChild<QLineEdit *>();
        editor.selectAll();
        QTest::keyClicks(&editor, text);
        settle();
        return editor;
    }
    QString told()
    {
        const auto *label = view.viewport()->findChild<QLabel *>("refusal");
        return label == nullptr || label->isHidden() ? QString() : label->text();
    }

    MessageBoxes boxes;
    ShownDatabase database;
    OrvaneTableView view{database.config};
};

TEST_F(ChangingTable, leavesOneWhereOneIs)
{
    view.verticalScrollBar()->setValue(20);
    view.setCurrentIndex(events().index(23, 2));
    view.setColumnWidth(1, 222);
    view.setColumnHidden(3, true);
    database.files.appendRows("event", records(61, 70));
    check();
    EXPECT_EQ(events().rowCount(), 70);
    EXPECT_EQ(topRow(), 20);
    EXPECT_EQ(currentId(), "24");
    EXPECT_EQ(view.selectionModel()->selectedIndexes().size(), 1);
    EXPECT_EQ(view.columnWidth(1), 222);
    EXPECT_TRUE(view.isColumnHidden(3));
    EXPECT_EQ(view.verticalHeader()->count(), 70);
}

TEST_F(ChangingTable, staysSortedAndInPlace)
{
    view.sortByColumn(columnNamed(events(), "prefor"), Qt::AscendingOrder);
    ASSERT_EQ(id(0), "60");
    view.verticalScrollBar()->setValue(20);
    view.setCurrentIndex(events().index(23, 2));
    view.setColumnWidth(1, 222);
    ASSERT_EQ(currentId(), "37");
    const int offset = view.currentIndex().row() - topRow();
    database.files.appendRows("event", records(61, 70));
    check();
    // After a sort that took long, as on a machine with much to do, the next one comes later.
    EXPECT_TRUE(QTest::qWaitFor([this] { return id(0) == "70"; })) << "what was appended is sorted in";
    EXPECT_EQ(currentId(), "37");
    EXPECT_EQ(view.currentIndex().row() - topRow(), offset) << "the current row is seen where it was";
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorSection(), columnNamed(events(), "prefor"));
    EXPECT_EQ(view.columnWidth(1), 222);
}

TEST_F(ChangingTable, isFollowedThroughACrunchByAnotherProgram)
{
    view.verticalScrollBar()->setValue(20);
    view.setCurrentIndex(events().index(23, 2));
    settle();
    replace(records(11));
    check();
    EXPECT_EQ(events().rowCount(), 50);
    EXPECT_EQ(currentId(), "24");
    EXPECT_EQ(view.selectionModel()->selectedIndexes().size(), 1);
    EXPECT_EQ(topRow(), 10);
}

TEST_F(ChangingTable, selectsNothingInPlaceOfARecordThatIsGone)
{
    view.setCurrentIndex(events().index(4, 2));
    settle();
    Rows others = records();
    others.erase(others.begin() + 4);
    replace(others);
    check();
    EXPECT_EQ(view.selectionModel()->selectedIndexes().size(), 0);
    EXPECT_EQ(view.currentIndex().row(), 4) << "the keyboard goes on there";
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(ChangingTable, marksNoRecordThatMayBeAnother)
{
    view.selectRow(4);
    settle();
    replace(records(3));
    const std::string before = TemporaryDatabase::readFile(database.files.tablePath("event"));
    view.markSelected();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].startsWith("Another program has replaced the table 'event'"))
        << boxes.texts()[0].toStdString();
    EXPECT_EQ(TemporaryDatabase::readFile(database.files.tablePath("event")), before);
    settle();
    EXPECT_EQ(currentId(), "5") << "the selection went with its record";
    view.markSelected();
    EXPECT_EQ(id(2), "");
}

TEST_F(ChangingTable, keepsWhatIsTypedAndTellsWhatIsStored)
{
    QLineEdit &editor = typing(4, "auth", "you");
    Rows rows = records();
    edit(rows);
    check();
    EXPECT_EQ(told(), "") << "the value is as it was";
    rows[4][2] = "them";
    edit(rows);
    check();
    EXPECT_EQ(editor.text(), "you");
    EXPECT_TRUE(told().contains("'them' is stored now")) << told().toStdString();
    QTest::keyClick(&editor, Qt::Key_Return);
    settle();
    EXPECT_EQ(events().index(4, columnNamed(events(), "auth")).data(), QVariant("you"));
    EXPECT_EQ(told(), "");
}

TEST_F(ChangingTable, takesTheEditorWithItsRecord)
{
    QLineEdit &editor = typing(4, "auth", "you");
    replace(records(3));
    check();
    EXPECT_EQ(editor.text(), "you");
    QTest::keyClick(&editor, Qt::Key_Return);
    settle();
    EXPECT_EQ(id(2), "5");
    EXPECT_EQ(shownValues(events(), "auth").mid(0, 5), (QStringList{"me", "me", "you", "me", "me"}));
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(ChangingTable, storesOnlyAfterOneHasSeenTheOtherFile)
{
    QLineEdit &editor = typing(4, "auth", "you");
    replace(records(3));
    const std::string before = TemporaryDatabase::readFile(database.files.tablePath("event"));
    QTest::keyClick(&editor, Qt::Key_Return); // nobody has looked since
    EXPECT_TRUE(told().contains("another program replaced the table")) << told().toStdString();
    EXPECT_EQ(editor.text(), "you");
    EXPECT_EQ(TemporaryDatabase::readFile(database.files.tablePath("event")), before);
    settle();
    QTest::keyClicks(&editor, "2");
    QTest::keyClick(&editor, Qt::Key_Return);
    settle();
    EXPECT_EQ(shownValues(events(), "auth").mid(0, 5), (QStringList{"me", "me", "you2", "me", "me"}));
}

TEST_F(ChangingTable, tellsWhatWasTypedForARecordThatIsGone)
{
    typing(4, "auth", "you");
    replace(records(20));
    check();
    settle();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("is gone")) << boxes.texts()[0].toStdString();
    EXPECT_TRUE(boxes.texts()[0].endsWith("you"));
    EXPECT_FALSE(shownValues(events(), "auth").contains("you"));
    EXPECT_EQ(view.currentIndex().row(), 4) << "the keyboard goes on there";
    EXPECT_FALSE(view.selectionModel()->hasSelection()) << "of what nobody chose";
}

TEST_F(ChangingTable, isDeletedUnderAnEditor)
{
    QLineEdit &editor = typing(4, "auth", "you");
    std::filesystem::remove(database.files.tablePath("event"));
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_TRUE(told().startsWith("Not stored: ")) << told().toStdString();
    EXPECT_EQ(editor.text(), "you");
    EXPECT_FALSE(std::filesystem::exists(database.files.tablePath("event")));
    check();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].endsWith("you"));
}

// ---- The row viewer ------------------------------------------------------------------------------

class ChangingRecord : public ChangingTable
{
protected:
    ChangingRecord()
    {
        window.setCentralWidget(form);
        form->setModel(&events(), 4);
        window.show();
        QApplication::setActiveWindow(&window);
    }
    QLineEdit &field(const char *name) { return *window.findChild<QLineEdit *>(name); }
    QString text(const char *name) { return field(name).text(); }
    QString gone()
    {
        const auto *label = window.findChild<QLabel *>("recordGone");
        return label->isHidden() ? QString() : label->text();
    }
    QString refusal(const char *name)
    {
        const auto *label = field(name).parentWidget()->findChild<QLabel *>("refusal");
        return label->isHidden() ? QString() : label->text();
    }
    void type(const char *name, const QString &typed)
    {
        field(name).setFocus();
        field(name).selectAll();
        QTest::keyClicks(&field(name), typed);
    }

    QMainWindow window;
    OrvaneRowView *form = new OrvaneRowView(database.config, &window);
};

TEST_F(ChangingRecord, showsWhatOthersStore)
{
    Rows rows = records(1, 61);
    rows[4][2] = "them";
    edit(rows);
    check();
    EXPECT_EQ(text("auth"), "them");
    EXPECT_EQ(window.findChild<QLabel *>("header")->text(), "in table 'event' (61 total rows)");
    EXPECT_EQ(text("rowEntry"), "4");
}

TEST_F(ChangingRecord, keepsWhatIsTypedAndTellsWhatIsStored)
{
    type("auth", "you");
    Rows rows = records();
    rows[4][2] = "them";
    edit(rows);
    check();
    EXPECT_EQ(text("auth"), "you");
    EXPECT_TRUE(refusal("auth").contains("'them' is stored now")) << refusal("auth").toStdString();
    QTest::keyClick(&field("auth"), Qt::Key_Return);
    EXPECT_EQ(events().index(4, 3).data(), QVariant("you"));
    EXPECT_EQ(refusal("auth"), "");
}

TEST_F(ChangingRecord, followsItsRecord)
{
    type("auth", "you");
    replace(records(3));
    check();
    EXPECT_EQ(text("rowEntry"), "2");
    EXPECT_EQ(text("evid"), "5");
    EXPECT_EQ(text("auth"), "you");
    EXPECT_EQ(refusal("auth"), "");
    QTest::keyClick(&field("auth"), Qt::Key_Return);
    EXPECT_EQ(shownValues(events(), "auth").mid(0, 4), (QStringList{"me", "me", "you", "me"}));
    view.sortByColumn(columnNamed(events(), "prefor"), Qt::AscendingOrder);
    EXPECT_EQ(text("evid"), "5");
    EXPECT_EQ(text("rowEntry"), "55");
}

TEST_F(ChangingRecord, saysThatItIsGone)
{
    type("auth", "you");
    replace(records(20, 25));
    check();
    EXPECT_TRUE(gone().contains("row 4")) << gone().toStdString();
    EXPECT_TRUE(refusal("auth").contains("'you' was not stored: the record is gone"))
        << refusal("auth").toStdString();
    EXPECT_EQ(text("evid"), "24") << "what is in its row";
    EXPECT_EQ(text("auth"), "me");
    window.findChild<QWidget *>("previousRow")->setFocus(); // nothing of it is stored there
    EXPECT_FALSE(shownValues(events(), "auth").contains("you"));
    form->setRow(0);
    EXPECT_EQ(gone(), "");
}

TEST_F(ChangingRecord, ofATableThatIsDeletedIsAnError)
{
    type("auth", "you");
    std::filesystem::remove(database.files.tablePath("event"));
    QTest::keyClick(&field("auth"), Qt::Key_Return);
    EXPECT_TRUE(refusal("auth").startsWith("'you' was not stored: ")) << refusal("auth").toStdString();
    check();
    EXPECT_EQ(text("rowEntry"), "**ILLEGAL VALUE**");
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(ChangingTable, saysWhenAViewStandsForNothing)
{
    OrvaneTableModel &late = *events().subset("evid > 30", "late");
    OrvaneTableView ofLate(database.config);
    ofLate.setModel(&late);
    ofLate.resize(600, 300);
    ofLate.show();
    settle();
    const QImage before = ofLate.viewport()->grab().toImage();
    replace(records(3));
    check();
    EXPECT_TRUE(late.isOutdated());
    EXPECT_NE(ofLate.viewport()->grab().toImage(), before);
    EXPECT_EQ(boxes.texts(), QStringList());
    elog_clear();
}

} // namespace
