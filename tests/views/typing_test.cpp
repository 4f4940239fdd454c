// Typing letters in the table view goes to the next row that begins with them.
#include <orvanetableview.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QTableView>
#include <QThread>

#include <gtest/gtest.h>

#include <orvane/db.h>

#include "shown_database.h"

namespace {

// The rows of site, with the cell in `field` as the current one.
class Typing : public testing::Test
{
protected:
    void show()
    {
        model = &database.table("site");
        view.setModel(model);
        view.resize(500, 300);
        view.show();
    }

    ~Typing() override { dbset_progress_hook(nullptr, nullptr); }

    void goTo(int row, const QString &field)
    {
        view.setCurrentIndex(model->index(row, columnNamed(*model, field)));
    }
    int row() const { return view.currentIndex().row(); }

    // Keys that follow one another at once; the first a while after any before.
    static void type(QAbstractItemView &into, const QString &text)
    {
        const int interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(0);
        QThread::msleep(2);
        for (const QChar letter : text) {
            QKeyEvent event(QEvent::KeyPress, 0, Qt::NoModifier, letter);
            QApplication::sendEvent(&into, &event);
            QApplication::setKeyboardInputInterval(60'000);
        }
        QApplication::setKeyboardInputInterval(interval);
    }
    void type(const QString &text) { type(view, text); }

    ShownDatabase database;
    OrvaneTableModel *model = nullptr;
    OrvaneTableView view{database.config};
};

class TypingInTwentyThousandRows : public Typing
{
protected:
    TypingInTwentyThousandRows()
    {
        ShownDatabase::Rows records;
        for (int row = 0; row < 20'000; ++row) {
            std::string name = "S" + std::to_string(row);
            if (row == 15'000) {
                name = "KONO";
            } else if (row == 16'000) {
                name = "-"; // null
            }
            records.push_back({name, "2008001", "-1", "1.5000", "2.5000", "3.0000", "name"});
        }
        database.files.addTable("site", records);
        show();
        goTo(0, "sta");
    }
};

TEST_F(TypingInTwentyThousandRows, goesToTheNextThatBeginsWithWhatIsTyped)
{
    type("k");
    EXPECT_EQ(row(), 15'000);
    EXPECT_EQ(view.currentIndex().column(), columnNamed(*model, "sta"));
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(view.currentIndex())));
    EXPECT_EQ(view.selectionModel()->selectedIndexes().size(), 1);
    type("s19");
    EXPECT_EQ(row(), 19'000);
    type("S12"); // behind the last row comes the first
    EXPECT_EQ(row(), 12);
    type("s");
    EXPECT_EQ(row(), 13);
}

TEST_F(TypingInTwentyThousandRows, worksAsInTheToolkitsView)
{
    QTableView theirs;
    theirs.setModel(model);
    for (const char *typed : {"s1", "S15", "ko", "ss", "s77", "x", "sx", "2", "name", "-", "s14991"}) {
        for (const char *field : {"sta", "staname", "ondate", "offdate"}) {
            goTo(14'990, field);
            theirs.setCurrentIndex(view.currentIndex());
            type(view, typed);
            type(theirs, typed);
            EXPECT_EQ(view.currentIndex(), theirs.currentIndex()) << typed << ", " << field;
        }
    }
}

TEST_F(TypingInTwentyThousandRows, staysWhereNoneBeginsWithWhatIsTyped)
{
    goTo(17, "sta");
    type("xs");
    EXPECT_EQ(row(), 17);
    // What is typed a while later is another word.
    type("k");
    EXPECT_EQ(row(), 15'000);
}

TEST_F(TypingInTwentyThousandRows, beginsAtTheFirstWhereThereIsNoCurrentCell)
{
    view.setCurrentIndex({});
    type("s");
    EXPECT_EQ(view.currentIndex(), model->index(0, view.columnAt(0)));
}

TEST_F(TypingInTwentyThousandRows, findsTheTextsOfASortedTable)
{
    model->sort(columnNamed(*model, "sta"), Qt::DescendingOrder);
    goTo(0, "sta");
    type("k");
    EXPECT_EQ(view.currentIndex().data().toString(), "KONO");
}

int stopAtOnce(double, void *calls)
{
    ++*static_cast<int *>(calls);
    return 1;
}

// Records of which the file system keeps but the first and the last: reading all takes many seconds.
TEST_F(Typing, stopsWhenTheProgressHookSaysSo)
{
    const std::string record = database.files.record("site", {"AAK", "2008001", "-1"}) + "\n";
    {
        QFile file(QString::fromStdString(database.files.tablePath("site")));
        ASSERT_TRUE(file.resize(0) && file.open(QIODevice::ReadWrite));
        file.write(record.data(), static_cast<qint64>(record.size()));
        if (!file.resize(100'000'000 * static_cast<qint64>(record.size()))) {
            GTEST_SKIP() << "no sparse files here";
        }
        file.seek(file.size() - static_cast<qint64>(record.size()));
        file.write(record.data(), static_cast<qint64>(record.size()));
    }
    database.setFontPoints(10);
    database.config.configure("show_empty_columns", true);
    show();
    ASSERT_EQ(model->rowCount(), 100'000'000);
    goTo(5, "sta");
    int calls = 0;
    dbset_progress_hook(&stopAtOnce, &calls);
    QElapsedTimer clock;
    clock.start();
    type("xyz");
    EXPECT_LT(clock.elapsed(), 5'000);
    EXPECT_EQ(row(), 5);
    EXPECT_EQ(calls, 1); // "xy" and "xyz" are nowhere, either
    type("a");
    EXPECT_EQ(calls, 2);
}

} // namespace
