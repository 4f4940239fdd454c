#include "rows_menu.h"

#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <orvanedatabasemodel.h>
#include <orvanerowview.h>

#include "running_program.h"
#include "support/user.h"

namespace {

const char *const onTables[] = {"addRows", "markSelected", "crunch"};
const char *const onViews[] = {"deleteSelectedRows", "deleteOtherVisibleRows", "deleteAllOtherRows"};

// Answers every question of the menu with Yes, and keeps what was asked.
class Yes : public QObject
{
public:
    Yes() { qApp->installEventFilter(this); }
    QStringList questions() const { return m_questions; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (box != nullptr && event->type() == QEvent::Show && box->button(QMessageBox::Yes) != nullptr) {
            EXPECT_EQ(box->standardButton(box->defaultButton()), QMessageBox::Cancel);
            m_questions.append(box->text());
            QMetaObject::invokeMethod(box->button(QMessageBox::Yes), "click", Qt::QueuedConnection);
        }
        return false;
    }

private:
    QStringList m_questions;
};

class Rows : public RunningProgram
{
protected:
    Rows()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390"}, {"KONO", "2001001", "-1", "59.6491"}});
        program.config().configure("request_view_names", false);
    }

    MainWindow &writable(const QString &table)
    {
        MainWindow *window = program.openDatabase(path(table), "r+", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened");
        }
        return *window;
    }

    static OrvaneTableView &view(MainWindow &window) { return *window.view()->getCurrentTableView(); }
    static int rows(MainWindow &window) { return window.view()->getCurrentTableModel()->rowCount(); }

    static void subset(MainWindow &window, const QString &expression)
    {
        User user;
        user.types(expression);
        action(window, "subset").trigger();
    }

    // The entries as the user sees them after opening the menu.
    template <class Names>
    static QStringList enabled(MainWindow &window, const Names &names)
    {
        QStringList found;
        auto *menu = window.findChild<QMenu *>("rowsMenu");
        menu->popup(QPoint(0, 0));
        emit menu->aboutToShow(); // again, as now it is visible
        for (const char *name : names) {
            if (action(window, name).isEnabled()) {
                found.append(name);
            }
        }
        menu->close();
        return found;
    }

    std::string siteFile() const { return TemporaryDatabase::readFile(files.tablePath("site")); }
};

TEST_F(Rows, canDoNothingWithoutATable)
{
    MainWindow &window = *program.showStartPage();
    EXPECT_EQ(enabled(window, onTables), QStringList());
    EXPECT_EQ(enabled(window, onViews), QStringList());
    EXPECT_FALSE(action(window, "allow_edits").isEnabled());
    EXPECT_FALSE(window.findChild<QMenu *>("newTableMenu")->isEnabled());
}

TEST_F(Rows, changeNothingInADatabaseOpenForReading)
{
    MainWindow &window = opened("site");
    view(window).selectRow(0);
    EXPECT_EQ(enabled(window, onTables), QStringList());
    EXPECT_EQ(enabled(window, onViews), QStringList());
    EXPECT_FALSE(action(window, "allow_edits").isEnabled());
    EXPECT_TRUE(action(window, "allow_edits").toolTip().contains("reading only"));
    EXPECT_FALSE(window.findChild<QMenu *>("newTableMenu")->isEnabled());
    subset(window, "sta == 'AAK'");
    view(window).selectRow(0);
    EXPECT_EQ(enabled(window, onTables), QStringList());
    EXPECT_EQ(enabled(window, onViews).size(), 3) << "a view can be made smaller all the same";
}

TEST_F(Rows, offerEachKindOfTableItsOwnCommands)
{
    MainWindow &window = writable("site");
    EXPECT_TRUE(action(window, "allow_edits").isEnabled());
    EXPECT_TRUE(window.findChild<QMenu *>("newTableMenu")->isEnabled());
    EXPECT_EQ(enabled(window, onTables), (QStringList{"addRows", "crunch"})) << "no row is selected";
    view(window).selectRow(1);
    EXPECT_EQ(enabled(window, onTables), (QStringList{"addRows", "markSelected", "crunch"}));
    EXPECT_EQ(enabled(window, onViews), QStringList());
    subset(window, "lat < 90");
    EXPECT_EQ(enabled(window, onViews), QStringList());
    view(window).selectRow(0);
    EXPECT_EQ(enabled(window, onViews).size(), 3);
    EXPECT_EQ(enabled(window, onTables), QStringList());
}

TEST_F(Rows, allowEditsOnlyWhileTicked)
{
    MainWindow &window = writable("site");
    OrvaneTableModel &table = *window.view()->getCurrentTableModel();
    const QModelIndex cell = table.indexForCell(0, "sta");
    EXPECT_FALSE(action(window, "allow_edits").isChecked());
    EXPECT_FALSE(table.flags(cell) & Qt::ItemIsEditable);
    action(window, "allow_edits").trigger();
    EXPECT_TRUE(action(window, "allow_edits").isChecked());
    EXPECT_TRUE(table.flags(cell) & Qt::ItemIsEditable);
    action(window, "allow_edits").trigger();
    EXPECT_FALSE(table.flags(cell) & Qt::ItemIsEditable);
}

TEST_F(Rows, areNotCrunchedWhenTheQuestionIsCancelled)
{
    const std::string before = siteFile();
    MainWindow &window = writable("site");
    action(window, "crunch").trigger();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(boxes.texts()[0],
              "Remove the empty records of 'site'? The records behind them get other numbers.");
    EXPECT_EQ(siteFile(), before);
}

TEST_F(Rows, areEmptiedAndThenCrunched)
{
    MainWindow &window = writable("site");
    view(window).selectAll();
    action(window, "markSelected").trigger();
    EXPECT_EQ(boxes.texts(), QStringList()) << "it can be undone";
    EXPECT_EQ(siteFile().find("AAK"), std::string::npos);
    EXPECT_FALSE(siteFile().empty()) << "the rows stay until the table is crunched";
    Yes yes;
    action(window, "crunch").trigger();
    EXPECT_EQ(yes.questions().size(), 1);
    EXPECT_EQ(siteFile(), "");
}

TEST_F(Rows, leaveAViewWithoutAQuestionAndWithoutALoss)
{
    const std::string before = siteFile();
    MainWindow &window = opened("site");
    subset(window, "lat < 90");
    ASSERT_EQ(rows(window), 2);
    view(window).selectRow(1);
    action(window, "deleteAllOtherRows").trigger();
    ASSERT_EQ(rows(window), 1);
    const OrvaneTableModel &table = *window.view()->getCurrentTableModel();
    EXPECT_EQ(table.index(0, 1).data().toString(), "KONO");
    view(window).selectRow(0);
    action(window, "deleteSelectedRows").trigger();
    EXPECT_EQ(rows(window), 0);
    EXPECT_EQ(window.findChild<QLabel *>("rowCountLabel")->text(), "0 Rows");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(siteFile(), before);
}

// By a shortcut, which works while nobody has looked into the menu.
TEST_F(Rows, areNotTouchedWithoutASelection)
{
    const std::string before = siteFile();
    MainWindow &window = writable("site");
    action(window, "markSelected").trigger();
    EXPECT_EQ(boxes.texts(), QStringList()) << "there is nothing to ask";
    EXPECT_EQ(siteFile(), before);
}

TEST_F(Rows, newTablesAreThoseThatAreNotThere)
{
    MainWindow &window = writable("site");
    auto *menu = window.findChild<QMenu *>("newTableMenu");
    emit menu->aboutToShow();
    QStringList names;
    for (const QAction *entry : menu->actions()) {
        names.append(entry->text());
    }
    EXPECT_EQ(names, (QStringList{"origin", "assoc", "remark", "kinds"}));
    menu->actions().first()->trigger();
    EXPECT_EQ(window.view()->getCurrentTableModel()->getTableName(), "origin");
    EXPECT_EQ(boxes.texts(), QStringList());
    const auto *viewer = window.findChild<OrvaneRowView *>();
    ASSERT_NE(viewer, nullptr);
    EXPECT_TRUE(viewer->isVisible()) << "the first row is put together there";
}

} // namespace
