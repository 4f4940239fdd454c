// Undo and redo of what is changed in a database, by every way to change it.
#include "undo_history.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>

#include <malloc.h>

#include <orvane/util.h>
#include <orvanedatabasemodel.h>
#include <orvanerowview.h>

#include "running_program.h"
#include "support/user.h"
#include "undo_step.h"

namespace {

// Another program, as far as the table's file is concerned.
class Other
{
public:
    explicit Other(const std::string &path) { dbopen_database(path.c_str(), "r+", &m_database); }
    ~Other() { OVdbclose(m_database); }
    Dbptr record(const char *table, int64_t number) const
    {
        Dbptr place = dblookup(m_database, "", table, "dbALL", "dbALL");
        place.record = number;
        return place;
    }
    void put(const char *table, int64_t number, const char *field, const char *text) const
    {
        DbValue value{};
        value.type = dbSTRING;
        value.text = const_cast<char *>(text);
        ASSERT_EQ(dbputv(record(table, number), field, &value), 0);
    }

private:
    Dbptr m_database = dbinvalid();
};

class Undo : public RunningProgram
{
protected:
    Undo()
    {
        std::vector<TemporaryDatabase::Row> rows;
        for (int row = 0; row < 30; ++row) {
            rows.push_back({"S" + std::to_string(row), std::to_string(1517875200 + row) + ".25000",
                            std::to_string(row + 1), "2018037", "P"});
        }
        files.addTable("arrival", rows);
        program.config().configure("request_view_names", false);
        program.config().configure("ask_before_changing_rows", false);
        window = program.openDatabase(path("arrival"), "r+", nullptr);
        window->show();
        QApplication::setActiveWindow(window);
        settle();
    }

    OrvaneTableView &view() { return *window->view()->getCurrentTableView(); }
    OrvaneTableModel &table() { return *window->view()->getCurrentTableModel(); }
    UndoHistory &history() { return *window->history(); }
    // Of a sorted table they are named with their table.
    int columnOf(const QString &field)
    {
        const int plain = table().indexForColumn(field).column();
        return plain > 0 ? plain : table().indexForColumn("arrival." + field).column();
    }
    QModelIndex cell(int row, const QString &field) { return table().index(row, columnOf(field)); }
    QString text(int row, const QString &field) { return table().data(cell(row, field)).toString(); }
    QString column(const QString &field)
    {
        QString all;
        for (int row = 0; row < table().rowCount(); ++row) {
            all += text(row, field) + " ";
        }
        return all;
    }
    void put(int row, const QString &field, const QString &value)
    {
        ASSERT_TRUE(table().setData(cell(row, field), value, Qt::EditRole));
        settle();
    }
    QString menuText(const char *name)
    {
        settle();
        return action(*window, name).text().remove('&');
    }
    void undo()
    {
        settle();
        action(*window, "undo").trigger();
        settle();
    }
    void redo()
    {
        settle();
        action(*window, "redo").trigger();
        settle();
    }
    QString notice() { return window->findChild<QLabel *>("noticeText")->text(); }

    void choosesInColumnMenu(const QString &field, int entry, const QString &value)
    {
        User user;
        user.choosesEntry(entry).types(value);
        const int number = table().indexForColumn(field).column();
        view().showColumnContextMenu(
            QPoint(view().horizontalHeader()->sectionViewportPosition(number) + 5, 5));
        settle();
    }

    MainWindow *window = nullptr;
};

TEST_F(Undo, hasNothingToDoAtFirst)
{
    EXPECT_FALSE(action(*window, "undo").isEnabled());
    EXPECT_FALSE(action(*window, "redo").isEnabled());
    EXPECT_EQ(menuText("undo"), "Undo");
    EXPECT_EQ(menuText("redo"), "Redo");
    undo();
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Undo, takesACellBackAndPutsItAgain)
{
    put(12, "sta", "KONO");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.sta in record 12");
    QSignalSpy told(&table(), &QAbstractItemModel::dataChanged);
    undo();
    EXPECT_EQ(text(12, "sta"), "S12");
    EXPECT_GT(told.size(), 0) << "whoever shows it looks again";
    EXPECT_EQ(menuText("undo"), "Undo");
    EXPECT_EQ(menuText("redo"), "Redo Change of arrival.sta in record 12");
    redo();
    EXPECT_EQ(text(12, "sta"), "KONO");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.sta in record 12");
}

TEST_F(Undo, goesBackInOrderAndANewChangeDropsWhatCouldBeRedone)
{
    put(0, "sta", "A");
    put(0, "sta", "B");
    put(1, "phase", "S");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.phase in record 1");
    undo();
    undo();
    EXPECT_EQ(text(0, "sta") + text(1, "phase"), "AP");
    put(2, "sta", "C");
    EXPECT_FALSE(action(*window, "redo").isEnabled());
    EXPECT_EQ(history().count(), 2);
    undo();
    undo();
    EXPECT_EQ(text(0, "sta") + text(2, "sta"), "S0S2");
    EXPECT_FALSE(action(*window, "undo").isEnabled());
}

TEST_F(Undo, goesBackWithoutALimit)
{
    const QString before = column("phase");
    constexpr int changes = 600;
    for (int change = 0; change < changes; ++change) {
        ASSERT_TRUE(
            table().setData(cell(change % 30, "phase"), QString::number(change % 7919), Qt::EditRole));
    }
    EXPECT_EQ(history().count(), changes);
    for (int change = 0; change < changes; ++change) {
        history().undo();
    }
    EXPECT_EQ(column("phase"), before);
    EXPECT_FALSE(action(*window, "undo").isEnabled());
    for (int change = 0; change < changes; ++change) {
        history().redo();
    }
    EXPECT_EQ(text(29, "phase"), QString::number(changes - 1));
}

TEST_F(Undo, takesChangeAllBackInOneStep)
{
    const QString before = column("phase");
    choosesInColumnMenu("phase", 2, "Pn");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.phase in 30 records");
    EXPECT_EQ(history().count(), 1);
    const QString after = column("phase");
    EXPECT_EQ(after, QString("Pn ").repeated(30));
    undo();
    EXPECT_EQ(column("phase"), before);
    redo();
    EXPECT_EQ(column("phase"), after);
}

TEST_F(Undo, takesTheSelectedCellsOfSeveralColumnsBackInOneStep)
{
    const QString before = column("sta") + column("phase");
    for (const int row : {3, 5}) {
        for (const char *field : {"sta", "phase"}) {
            view().selectionModel()->select(cell(row, field), QItemSelectionModel::Select);
        }
    }
    choosesInColumnMenu("phase", 1, "X");
    EXPECT_EQ(text(3, "sta") + text(3, "phase") + text(5, "sta") + text(5, "phase"), "XXXX");
    EXPECT_EQ(menuText("undo"), "Undo Change of 4 Values of arrival");
    EXPECT_EQ(history().count(), 1);
    undo();
    EXPECT_EQ(column("sta") + column("phase"), before);
}

TEST_F(Undo, takesMarksBack)
{
    const QString before = column("sta") + column("time") + column("arid");
    view().selectRow(4);
    view().selectionModel()->select(cell(9, "sta"), QItemSelectionModel::Select);
    action(*window, "markSelected").trigger();
    EXPECT_EQ(text(4, "sta") + text(9, "sta"), "");
    EXPECT_EQ(menuText("undo"), "Undo Marking 2 Records of arrival");
    undo();
    EXPECT_EQ(column("sta") + column("time") + column("arid"), before);
    redo();
    EXPECT_EQ(text(4, "sta") + text(9, "sta"), "");
    undo();
    {
        User user;
        user.choosesEntry(0);
        view().showRowContextMenu(QPoint(5, view().rowViewportPosition(2) + 2));
    }
    EXPECT_EQ(text(2, "sta"), "");
    EXPECT_EQ(menuText("undo"), "Undo Marking Record 2 of arrival");
    undo();
    EXPECT_EQ(text(2, "sta"), "S2");
    EXPECT_EQ(boxes.texts(), QStringList()) << "what can be undone is not asked for";
}

TEST_F(Undo, marksTheRecordsOfATableThatIsShownSorted)
{
    table().sort(table().indexForColumn("arid").column(), Qt::DescendingOrder);
    ASSERT_EQ(text(0, "sta"), "S29");
    view().selectRow(0);
    action(*window, "markSelected").trigger();
    EXPECT_EQ(menuText("undo"), "Undo Marking Record 29 of arrival");
    const Other other(files.path());
    char record[200];
    ASSERT_GT(dbget(other.record("arrival", 29), record, sizeof record), 0);
    EXPECT_EQ(record[0], '-');
    undo();
    QTest::qWait(200); // until then what was read just now stands for the file
    ASSERT_GT(dbget(other.record("arrival", 29), record, sizeof record), 0);
    EXPECT_EQ(record[0], 'S');
}

TEST_F(Undo, takesBackWhatTheRowViewerDid)
{
    program.config().configure("allow_edits", true);
    window->view()->addRows();
    auto &viewer = *window->findChild<OrvaneRowView *>();
    const auto type = [&viewer](const char *field, const char *value) {
        auto *editor = viewer.findChild<QLineEdit *>(field);
        editor->setFocus();
        editor->setText(value);
        QTest::keyClick(editor, Qt::Key_Return);
    };
    type("sta", "NEW");
    type("time", "2018-02-07");
    type("arid", "900");
    EXPECT_EQ(menuText("undo"), "Undo") << "the scratch record is not in the table";
    viewer.findChild<QPushButton *>("add")->click();
    ASSERT_EQ(table().rowCount(), 31);
    EXPECT_EQ(menuText("undo"), "Undo Adding 1 Record to arrival");
    viewer.setRow(7);
    type("phase", "S");
    EXPECT_EQ(text(7, "phase"), "S");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.phase in record 7");
    undo();
    EXPECT_EQ(text(7, "phase"), "P");
    EXPECT_EQ(viewer.findChild<QLineEdit *>("phase")->text(), "P");
    undo();
    EXPECT_EQ(table().rowCount(), 31) << "numbers stay";
    EXPECT_EQ(text(30, "sta"), "");
    redo();
    EXPECT_EQ(text(30, "sta"), "NEW");
    const auto *undoAction = &action(*window, "undo");
    EXPECT_TRUE(viewer.mainWindow()->actions().contains(const_cast<QAction *>(undoAction)))
        << "its keys work in the row viewer, too";
}

TEST_F(Undo, leavesWhatAnotherProgramChangedAndSaysSo)
{
    put(3, "sta", "OURS");
    Other(files.path()).put("arrival", 3, "sta", "THEIRS");
    undo();
    EXPECT_EQ(text(3, "sta"), "THEIRS");
    EXPECT_TRUE(notice().contains("Nothing was undone of \"Change of arrival.sta in record 3\""))
        << notice().toStdString();
    EXPECT_EQ(menuText("undo") + menuText("redo"), "UndoRedo") << "it is of no use any more";

    choosesInColumnMenu("phase", 2, "Pn");
    Other(files.path()).put("arrival", 5, "phase", "S");
    undo();
    EXPECT_TRUE(notice().startsWith("1 of 30 values of \"Change of arrival.phase in 30 records\" were left"))
        << notice().toStdString();
    EXPECT_EQ(text(4, "phase") + text(5, "phase"), "PS");
    redo();
    EXPECT_EQ(text(4, "phase") + text(5, "phase"), "PnS");
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Undo, endsForATableThatIsCrunched)
{
    window->view()->setFocusTable("site");
    put(0, "sta", "SITE");
    window->view()->setFocusTable("arrival");
    put(3, "sta", "A");
    view().selectRow(1);
    action(*window, "markSelected").trigger();
    put(5, "sta", "B");
    table().crunch();
    EXPECT_EQ(menuText("undo"), "Undo Change of site.sta in record 0") << "of another table";
    undo();
    EXPECT_EQ(menuText("undo"), "Undo");
    EXPECT_EQ(text(4, "sta"), "B") << "record 5 has another number now";
    put(4, "sta", "C");
    undo();
    EXPECT_EQ(text(4, "sta"), "B");
}

TEST_F(Undo, endsForATableThatAnotherProgramCrunched)
{
    put(3, "sta", "A");
    put(5, "sta", "B");
    undo();
    {
        const Other other(files.path());
        ASSERT_EQ(dbmark(other.record("arrival", 0)), 0);
        ASSERT_EQ(dbcrunch(other.record("arrival", dbALL)), 0);
    }
    undo();
    EXPECT_EQ(text(2, "sta") + text(3, "sta"), "AS4");
    EXPECT_TRUE(notice().contains("crunched or replaced")) << notice().toStdString();
    EXPECT_EQ(menuText("undo") + menuText("redo"), "UndoRedo");
    EXPECT_EQ(boxes.texts(), QStringList());
    emit table().modelReset(); // as after a look for changed tables
    settle();
    put(2, "sta", "C");
    {
        const Other other(files.path());
        ASSERT_EQ(dbmark(other.record("arrival", 0)), 0);
        ASSERT_EQ(dbcrunch(other.record("arrival", dbALL)), 0);
    }
    history().lookForNewNumbers(); // as after each look for changed tables
    EXPECT_EQ(menuText("undo"), "Undo");
}

TEST_F(Undo, isOfOneWindow)
{
    TemporaryDatabase more;
    more.addTable("site", {{"AAK", "2008001"}});
    MainWindow *second = program.openDatabase(QString::fromStdString(more.path()) + ".site", "r+", nullptr);
    ASSERT_NE(second, window);
    put(3, "sta", "A");
    EXPECT_FALSE(action(*second, "undo").isEnabled());
    OrvaneTableModel &site = *second->view()->getCurrentTableModel();
    ASSERT_TRUE(site.setData(site.index(0, 1), "KONO", Qt::EditRole));
    settle();
    EXPECT_EQ(action(*second, "undo").text(), "&Undo Change of site.sta in record 0");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.sta in record 3");
    delete second;
    put(4, "sta", "B");
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.sta in record 4")
        << "this one still hears of changes";
}

TEST_F(Undo, tellsWhatCrunchingEnds)
{
    action(*window, "crunch").trigger();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_FALSE(boxes.texts().first().contains("undone"));
    put(3, "sta", "A");
    action(*window, "crunch").trigger();
    EXPECT_TRUE(
        boxes.texts().last().endsWith("What was changed in the table before can't be undone any more."));
}

// The texts of the records are in a file, and what is kept of them are those of one field.
TEST_F(Undo, keepsLittleOfAStepOverAMillionRecords)
{
    constexpr int records = 1'000'000;
    const std::string line = files.record("arrival", {"AAK", "1517875201.50000", "1", "2018037", "P"}) + "\n";
    std::string lines;
    lines.reserve(line.size() * records);
    for (int row = 0; row < records; ++row) {
        lines += line;
    }
    files.writeFile("quakes.arrival", lines);
    lines = std::string();
    settle();
    window->lookForChanges();
    settle();
    ASSERT_EQ(table().rowCount(), records);
    malloc_trim(0);
    const auto inUse = [] { return mallinfo2().uordblks; };
    const int field = table().indexForColumn("phase").column();
    const std::size_t before = inUse();
    const auto done = table().setRowsData({{0, records - 1}}, field, "Pn");
    EXPECT_EQ(done.stored, records) << done.reason.toStdString();
    settle();
    const UndoStep *step = history().undoStep();
    ASSERT_NE(step, nullptr);
    EXPECT_TRUE(step->isInFile());
    EXPECT_LT(step->bytesKept(), 9 * records) << "eight bytes each, which is the field's width";
    EXPECT_LT(inUse(), before + (4u << 20)) << "the million records are not in memory";
    EXPECT_EQ(menuText("undo"), "Undo Change of arrival.phase in 1,000,000 records");
    undo();
    EXPECT_EQ(text(0, "phase") + text(records - 1, "phase"), "PP");
    redo();
    EXPECT_EQ(text(0, "phase") + text(records / 2, "phase") + text(records - 1, "phase"), "PnPnPn");
    EXPECT_EQ(boxes.texts(), QStringList());
}

// ---- The question, and what shows that editing is off
// ------------------------------------------------------

TEST_F(Undo, ChangeAllAsksWithTheNumberOfRows)
{
    program.config().configure("ask_before_changing_rows", true);
    choosesInColumnMenu("phase", 2, "P%1n");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(boxes.texts().last(), "Change 'phase' to 'P%1n' in all 30 rows of 'arrival'?");
    EXPECT_EQ(column("phase"), QString("P ").repeated(30)) << "the answer was no";
    view().selectRow(2);
    view().selectionModel()->select(cell(9, "phase"), QItemSelectionModel::Select);
    choosesInColumnMenu("phase", 1, "S");
    ASSERT_EQ(boxes.texts().size(), 2);
    EXPECT_TRUE(boxes.texts().last().endsWith(" cells in 2 rows of 'arrival'?"))
        << boxes.texts().last().toStdString();
    EXPECT_FALSE(action(*window, "undo").isEnabled());
}

TEST_F(Undo, AsksNothingForOneCell)
{
    program.config().configure("ask_before_changing_rows", true);
    view().selectionModel()->select(cell(9, "phase"), QItemSelectionModel::ClearAndSelect);
    choosesInColumnMenu("phase", 1, "S");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(text(9, "phase"), "S");
}

TEST_F(Undo, AYesChangesTheRows)
{
    program.config().configure("ask_before_changing_rows", true);
    QTimer yes;
    QObject::connect(&yes, &QTimer::timeout, [] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            if (auto *change = box->findChild<QPushButton *>("change")) {
                EXPECT_EQ(box->defaultButton(), change);
                change->click();
            }
        }
    });
    yes.start(0);
    choosesInColumnMenu("phase", 2, "Pn");
    EXPECT_EQ(column("phase"), QString("Pn ").repeated(30));
}

TEST_F(Undo, EditingIsSeenToBeOffAndOn)
{
    auto &sign = *window->findChild<QToolButton *>("editingSign");
    EXPECT_EQ(sign.text(), "Editing Off");
    sign.click();
    EXPECT_EQ(sign.text(), "Editing On");
    EXPECT_TRUE(program.config()["allow_edits"].toBool());
    EXPECT_TRUE(action(*window, "allow_edits").isChecked());
    action(*window, "allow_edits").trigger();
    EXPECT_EQ(sign.text(), "Editing Off");
    delete window;
    MainWindow &reader = opened("arrival");
    auto &readOnly = *reader.findChild<QToolButton *>("editingSign");
    EXPECT_EQ(readOnly.text(), "Read Only");
    EXPECT_TRUE(readOnly.toolTip().contains("reading only"));
    readOnly.click();
    EXPECT_FALSE(program.config()["allow_edits"].toBool());
    EXPECT_TRUE(action(reader, "crunch").toolTip().contains("reading only")) << "a disabled command says why";
}

} // namespace
