// Copying and pasting cells.
#include "edit_menu.h"

#include <functional>

#include <QClipboard>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <orvane/db.h>

#include "running_program.h"
#include "support/user.h"

namespace {

class CellClipboard : public RunningProgram
{
protected:
    CellClipboard()
    {
        files.addTable("remark",
                       {{"1", "1", "first"}, {"2", "1", "it's 5\" wide"}, {"3", "1"}, {"4", "1", " "}});
        files.addTable("origin",
                       {{"10.0000", "20.0000", "5.0000", "1517961600.12345", "1", "8", "3.50", "me"},
                        {"-5.5000", "30.0000", "-999.0000", "1517961700.00000", "2", "8"},
                        {"11.0000", "40.0000", "33.0000", "1517961800.00000", "3", "8"}});
        program.config().configure("show_empty_columns", true);
        QGuiApplication::clipboard()->setText("before");
    }

    MainWindow &opened(const QString &table, const QString &mode = "r")
    {
        MainWindow *window = program.openDatabase(path(table), mode, nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened");
        }
        if (mode == "r+") {
            action(*window, "allow_edits").trigger();
        }
        return *window;
    }

    static OrvaneTableView &view(MainWindow &window) { return *window.view()->getCurrentTableView(); }

    static QModelIndex cell(MainWindow &window, int row, const QString &field)
    {
        const OrvaneTableModel &table = *view(window).model();
        return table.index(row, table.indexForColumn(field).column());
    }

    static void select(MainWindow &window, const QModelIndex &first, const QModelIndex &last,
                       QItemSelectionModel::SelectionFlags how = QItemSelectionModel::ClearAndSelect)
    {
        view(window).selectionModel()->select(QItemSelection(first, last), how);
    }

    static QString copied(MainWindow &window, const char *command = "copy")
    {
        action(window, command).trigger();
        return QGuiApplication::clipboard()->text();
    }

    static void paste(MainWindow &window, const QString &text)
    {
        QGuiApplication::clipboard()->setText(text);
        action(window, "paste").trigger();
    }

    std::string file(const char *table) const { return TemporaryDatabase::readFile(files.tablePath(table)); }

    // What the table shows afterwards.
    static QString shown(MainWindow &window, int row, const char *field)
    {
        return cell(window, row, field).data().toString();
    }
};

TEST_F(CellClipboard, CopiesCellsAsTheyAreShown)
{
    MainWindow &window = opened("origin");
    select(window, cell(window, 0, "lat"), cell(window, 1, "time"));
    EXPECT_EQ(copied(window).toStdString(), "10.0000\t20.0000\t5.0000\t02/07/2018 (038) 00:00:00.123450 UTC\n"
                                            "-5.5000\t30.0000\t\t02/07/2018 (038) 00:01:40.000000 UTC\n");
    program.config().configure("show_readable_times", false);
    program.config().configure("show_raw_nulls", true);
    select(window, cell(window, 1, "depth"), cell(window, 1, "time"));
    EXPECT_EQ(copied(window).toStdString(), "-999.0000\t1517961700.00000\n");
}

TEST_F(CellClipboard, CopiesOneCellWithoutAnEndOfLine)
{
    MainWindow &window = opened("remark");
    select(window, cell(window, 0, "remark"), cell(window, 0, "remark"));
    EXPECT_EQ(copied(window), "first");
    select(window, cell(window, 1, "remark"), cell(window, 1, "remark"));
    EXPECT_EQ(copied(window), "\"it's 5\"\" wide\"");
    select(window, cell(window, 2, "remark"), cell(window, 2, "remark"));
    EXPECT_EQ(copied(window), "\n") << "no value";
    select(window, cell(window, 3, "remark"), cell(window, 3, "remark"));
    EXPECT_EQ(copied(window), "\"\"") << "blanks";
}

TEST_F(CellClipboard, CopiesColumnsInTheOrderShownAndHiddenOnesNot)
{
    MainWindow &window = opened("origin");
    view(window).setFieldNamesVisible({"orid", "lat", "depth"});
    view(window).selectAll();
    EXPECT_EQ(copied(window).toStdString(), "1\t10.0000\t5.0000\n2\t-5.5000\t\n3\t11.0000\t33.0000\n");
    EXPECT_EQ(copied(window, "copyWithNames").toStdString(),
              "orid\tlat\tdepth\n1\t10.0000\t5.0000\n2\t-5.5000\t\n3\t11.0000\t33.0000\n");
    QHeaderView &header = *view(window).horizontalHeader();
    header.moveSection(2, 0);
    EXPECT_EQ(copied(window).toStdString(), "5.0000\t1\t10.0000\n\t2\t-5.5000\n33.0000\t3\t11.0000\n");
}

TEST_F(CellClipboard, CopiesRowsInTheOrderShown)
{
    MainWindow &window = opened("origin");
    view(window).setFieldNamesVisible({"orid", "lat"});
    view(window).sortByColumn(1, Qt::AscendingOrder); // lat
    view(window).selectAll();
    EXPECT_EQ(copied(window).toStdString(), "2\t-5.5000\n1\t10.0000\n3\t11.0000\n");
}

TEST_F(CellClipboard, CopiesSeveralRangesThatMakeUpAGrid)
{
    MainWindow &window = opened("origin");
    view(window).setFieldNamesVisible({"orid", "lat", "lon"});
    const auto add = QItemSelectionModel::Select;
    select(window, cell(window, 0, "orid"), cell(window, 0, "orid"));
    select(window, cell(window, 2, "orid"), cell(window, 2, "orid"), add);
    select(window, cell(window, 0, "lon"), cell(window, 0, "lon"), add);
    EXPECT_EQ(copied(window), "before") << "a cell is missing";
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().front().contains("in each row the same columns"));
    select(window, cell(window, 2, "lon"), cell(window, 2, "lon"), add);
    EXPECT_EQ(copied(window).toStdString(), "1\t20.0000\n3\t40.0000\n");
    select(window, cell(window, 1, "lat"), cell(window, 1, "lat"), add);
    copied(window);
    EXPECT_EQ(boxes.texts().size(), 2);
}

TEST_F(CellClipboard, LeavesTheClipboardAloneWithoutASelection)
{
    MainWindow &window = opened("origin");
    view(window).clearSelection();
    EXPECT_EQ(copied(window), "before");
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(CellClipboard, IsInTheEditMenuAndInTheMenuOfACell)
{
    MainWindow &window = opened("origin");
    EXPECT_TRUE(action(window, "copy").isEnabled());
    EXPECT_FALSE(action(window, "paste").isEnabled()) << "the database is open for reading only";
    EXPECT_EQ(action(window, "copy").shortcut(), QKeySequence("Ctrl+C"));
    EXPECT_EQ(action(window, "paste").shortcut(), QKeySequence("Ctrl+V"));
    window.show();
    select(window, cell(window, 0, "orid"), cell(window, 0, "orid"));
    User user;
    user.meets<QMenu>([](QMenu &menu) {
        QStringList texts;
        for (const QAction *entry : menu.actions()) {
            texts.append(entry->text());
        }
        EXPECT_EQ(texts, (QStringList{"Find Backward", "Find Forward", "Subset", "", "&Copy", "&Paste"}));
        for (int step = 0; step < 4; ++step) {
            QTest::keyClick(&menu, Qt::Key_Down);
        }
        QTest::keyClick(&menu, Qt::Key_Return);
    });
    view(window).showCellContextMenu(view(window).visualRect(cell(window, 0, "orid")).center());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "1");
    EXPECT_EQ(boxes.texts(), QStringList());
}

// ---- Pasting ------------------------------------------------------------------------------------------

TEST_F(CellClipboard, PastesABlockFromTheFirstSelectedCellOn)
{
    MainWindow &window = opened("origin", "r+");
    select(window, cell(window, 1, "depth"), cell(window, 1, "depth"));
    paste(window, "7.5\t2018-02-08 00:00:00\r\n\t1518048000.5\r\n");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(shown(window, 1, "depth"), "7.5000");
    EXPECT_EQ(shown(window, 1, "time"), "02/08/2018 (039) 00:00:00.000000 UTC");
    EXPECT_FALSE(cell(window, 2, "depth").data().isValid()) << "nothing became null";
    EXPECT_EQ(shown(window, 2, "time"), "02/08/2018 (039) 00:00:00.500000 UTC");
    EXPECT_EQ(shown(window, 0, "depth"), "5.0000");
}

TEST_F(CellClipboard, PastesByTheColumnsAsTheyAreShown)
{
    MainWindow &window = opened("origin", "r+");
    view(window).setFieldNamesVisible({"auth", "lat", "orid"});
    select(window, cell(window, 0, "auth"), cell(window, 0, "auth"));
    paste(window, "you\t1.5\t77\n");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(shown(window, 0, "auth"), "you");
    EXPECT_EQ(shown(window, 0, "lat"), "1.5000");
    EXPECT_EQ(shown(window, 0, "orid"), "77");
}

TEST_F(CellClipboard, PastesWhatWasCopiedWithoutAChange)
{
    MainWindow &window = opened("origin", "r+");
    const std::string before = file("origin");
    view(window).selectAll();
    paste(window, copied(window));
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(file("origin"), before) << "not even the time of the change";
}

TEST_F(CellClipboard, PastesOneValueIntoEverySelectedCell)
{
    MainWindow &window = opened("origin", "r+");
    select(window, cell(window, 0, "auth"), cell(window, 0, "auth"));
    select(window, cell(window, 2, "auth"), cell(window, 2, "auth"), QItemSelectionModel::Select);
    paste(window, "all of us");
    EXPECT_EQ(shown(window, 0, "auth"), "all of us");
    EXPECT_EQ(shown(window, 1, "auth"), "");
    EXPECT_EQ(shown(window, 2, "auth"), "all of us");
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(CellClipboard, WhatWasPastedIsOneStepBack)
{
    MainWindow &window = opened("origin", "r+");
    const auto texts = [&] {
        QStringList all;
        for (int row = 0; row < 3; ++row) {
            for (const char *field : {"lat", "lon", "orid"}) {
                all.append(shown(window, row, field));
            }
        }
        return all;
    };
    view(window).setFieldNamesVisible({"lat", "lon", "orid"});
    const QStringList before = texts();
    select(window, cell(window, 0, "lat"), cell(window, 0, "lat"));
    paste(window, "1\t20.0000\t7\n2\t31\t8\n3\t32\t9\n"); // one of them is there already
    EXPECT_EQ(boxes.texts(), QStringList());
    const QStringList after = texts();
    EXPECT_EQ(after,
              (QStringList{"1.0000", "20.0000", "7", "2.0000", "31.0000", "8", "3.0000", "32.0000", "9"}));
    action(window, "undo").trigger();
    EXPECT_EQ(texts(), before);
    EXPECT_FALSE(action(window, "undo").isEnabled());
    action(window, "redo").trigger();
    EXPECT_EQ(texts(), after);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(CellClipboard, PastesQuotesAndBlanks)
{
    MainWindow &window = opened("remark", "r+");
    select(window, cell(window, 0, "remark"), cell(window, 0, "remark"));
    paste(window, "\"a \"\"b\"\" c\"\n\"\"\n");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(shown(window, 0, "remark"), "a \"b\" c");
    EXPECT_EQ(shown(window, 1, "remark"), "");
    EXPECT_TRUE(cell(window, 1, "remark").data().isValid()) << "blank is a value of a text";
}

struct RefusedPasting {
    const char *name;
    const char *field;
    int row;
    const char *text;
    const char *reason;
};

void PrintTo(const RefusedPasting &refused, std::ostream *out)
{
    *out << refused.name;
}

class RefusedPastings : public CellClipboard, public testing::WithParamInterface<RefusedPasting>
{
};

const RefusedPasting refusedPastings[] = {
    {"ANumberOutOfRange", "lat", 0, "1\t2\n91\t3\n", "Row 1, lat: '91' can't be stored: "},
    {"AWordForANumber", "orid", 1, "4\nmany\n", "Row 2, orid: 'many' can't be stored: "},
    {"ATextTooLong", "auth", 0, "a name that is much too long", "can't be stored: "},
    {"ALineFeedInAText", "auth", 0, "\"two\nlines\"", "can't be stored: "},
    {"NoTime", "time", 0, "1517961600\nsome day\n", "Row 1, time: 'some day' can't be stored: "},
    {"TooManyRows", "lat", 1, "1\n2\n3\n", "the clipboard has 3 rows, and from row 1 on there are only 2"},
    {"TooManyColumns", "lddate", 0, "1\t2\n",
     "the clipboard has 2 columns, and from column lddate on only 1"},
    {"LinesOfUnequalLength", "lat", 0, "1\t2\n3\n",
     "line 2 of the clipboard has 1 values where the first has 2"},
};

TEST_P(RefusedPastings, ChangeNothing)
{
    const RefusedPasting &refused = GetParam();
    MainWindow &window = opened("origin", "r+");
    const std::string before = file("origin");
    select(window, cell(window, refused.row, refused.field), cell(window, refused.row, refused.field));
    paste(window, refused.text);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().front().contains(refused.reason)) << boxes.texts().front().toStdString();
    EXPECT_TRUE(boxes.texts().front().contains("Nothing was pasted"));
    EXPECT_EQ(file("origin"), before);
}

INSTANTIATE_TEST_SUITE_P(Clipboard, RefusedPastings, testing::ValuesIn(refusedPastings),
                         [](const auto &refused) { return std::string(refused.param.name); });

TEST_F(CellClipboard, PastesNothingFromAnEmptyClipboard)
{
    MainWindow &window = opened("origin", "r+");
    select(window, cell(window, 0, "lat"), cell(window, 0, "lat"));
    paste(window, QString());
    EXPECT_EQ(boxes.texts(), QStringList{"There is no text in the clipboard to be pasted."});
}

TEST_F(CellClipboard, PastesOnlyWhileEditsAreAllowed)
{
    MainWindow &window = opened("origin", "r+");
    EXPECT_TRUE(action(window, "paste").isEnabled());
    action(window, "allow_edits").trigger();
    EXPECT_FALSE(action(window, "paste").isEnabled());
    EXPECT_TRUE(action(window, "paste").toolTip().contains("Allow Edits"));
}

TEST_F(CellClipboard, AsksBeforeItChangesManyCells)
{
    std::vector<TemporaryDatabase::Row> rows;
    for (int i = 1; i <= 10001; ++i) {
        rows.push_back({std::to_string(i), "1", "text"});
    }
    files.addTable("remark", rows);
    MainWindow &window = opened("remark", "r+");
    const std::string before = file("remark");
    select(window, cell(window, 0, "remark"), cell(window, 10000, "remark"));
    paste(window, "same");
    EXPECT_EQ(boxes.texts(), QStringList{"Change 10,001 cells?"});
    EXPECT_EQ(file("remark"), before);
}

// Several parts of the clipboard, each looked at by itself.
TEST_F(CellClipboard, StoresNothingOfManyCellsWhenTheLastDoesNotFit)
{
    std::vector<TemporaryDatabase::Row> rows;
    for (int i = 1; i <= 3000; ++i) {
        rows.push_back({std::to_string(i), "1", "text"});
    }
    files.addTable("remark", rows);
    MainWindow &window = opened("remark", "r+");
    const std::string before = file("remark");
    view(window).setFieldNamesVisible({"commid", "lineno", "remark"});
    QString text;
    for (int i = 1; i <= 3000; ++i) {
        text += QString("%1\t%2\tremark %1\n")
                    .arg(10000 - i)
                    .arg(i == 3000 ? QString("many") : QString::number(i));
    }
    select(window, cell(window, 0, "commid"), cell(window, 0, "commid"));
    paste(window, text);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].startsWith("Nothing was pasted. Row 2999, lineno: 'many' can't be stored: "))
        << boxes.texts()[0].toStdString();
    EXPECT_FALSE(boxes.texts()[0].contains("dbcheckv")) << "which a user has never heard of";
    EXPECT_EQ(file("remark"), before);
    EXPECT_FALSE(action(window, "undo").isEnabled());

    paste(window, text.replace("many", "5"));
    EXPECT_EQ(boxes.texts().size(), 1);
    for (const int row : {0, 1, 1023, 1024, 2999}) {
        EXPECT_EQ(shown(window, row, "commid"), QString::number(9999 - row));
        EXPECT_EQ(shown(window, row, "lineno"), QString::number(row == 2999 ? 5 : row + 1));
        EXPECT_EQ(shown(window, row, "remark"), "remark " + QString::number(9999 - row));
    }
    action(window, "undo").trigger();
    EXPECT_EQ(shown(window, 2999, "remark"), "text");
    EXPECT_EQ(shown(window, 0, "commid"), "1");
}

TEST_F(CellClipboard, TellsHowFarPastingIsAndCanBeCancelled)
{
    std::vector<TemporaryDatabase::Row> rows;
    for (int i = 1; i <= 9000; ++i) {
        rows.push_back({std::to_string(i), "1", "text"});
    }
    files.addTable("remark", rows);
    MainWindow &window = opened("remark", "r+");
    const std::string before = file("remark");
    QString text;
    for (int i = 1; i <= 9000; ++i) {
        text += QString("remark %1\n").arg(i);
    }
    struct User {
        double last = 0;
        bool hasGoneBack = false;
    } user;
    dbset_progress_hook(
        [](double fraction, void *data) {
            auto &told = *static_cast<User *>(data);
            told.hasGoneBack = told.hasGoneBack || fraction < told.last;
            told.last = fraction;
            return fraction > 0.5 ? 1 : 0;
        },
        &user);
    select(window, cell(window, 0, "remark"), cell(window, 0, "remark"));
    paste(window, text);
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_FALSE(user.hasGoneBack);
    if (user.last <= 0.5) { // a machine on which storing takes less time than between two calls
        EXPECT_EQ(shown(window, 8999, "remark"), "remark 9000");
        return;
    }
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].startsWith("Pasting was cancelled. ")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(shown(window, 0, "remark"), "remark 1");
    EXPECT_EQ(shown(window, 8999, "remark"), "text");
    action(window, "undo").trigger();
    EXPECT_EQ(shown(window, 0, "remark"), "text");
}

// ---- Rows that are gone -------------------------------------------------------------------------------

TEST_F(CellClipboard, CopiesNoRowsOfRecordsThatAreGone)
{
    MainWindow &window = opened("origin");
    program.config().configure("request_view_names", false);
    User user;
    user.types("orid > 0");
    action(window, "subset").trigger();
    ASSERT_TRUE(view(window).model()->tableIsView());
    files.addTable("origin", {});
    QTest::qWait(200); // until then what was read just now stands for the file
    view(window).selectAll();
    EXPECT_EQ(copied(window), "before");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].startsWith("Row 0 can't be read any more"))
        << boxes.texts()[0].toStdString();
}

// ---- Many cells ---------------------------------------------------------------------------------------

TEST_F(CellClipboard, CanBeCancelledAndLeavesTheClipboardAlone)
{
    MainWindow &window = opened("origin");
    view(window).selectAll();
    dbset_progress_hook([](double, void *) { return 1; }, nullptr);
    QString left;
    for (int attempt = 0; attempt < 5 && left != "before"; ++attempt) {
        QGuiApplication::clipboard()->setText("before");
        QTest::qSleep(150); // the hook is asked at most every 100 ms, and others ask it, too
        left = copied(window);
    }
    EXPECT_EQ(left, "before");
    QTest::qWait(150);
    EXPECT_EQ(boxes.texts(), QStringList());
    dbset_progress_hook(nullptr, nullptr);
}

} // namespace
