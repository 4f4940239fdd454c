#include "rows_menu.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

#include <orvane/tr.h>
#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>

#include "application.h"
#include "main_window.h"

namespace {

enum class Of { WritableTable, View };

} // namespace

// One command on rows.
struct RowCommand {
    const char *name; // object name of the action
    const char *text;
    const char *keys; // portable text of the shortcut
    const char *tip;
    Of of;
    bool needsSelection;
    // What is asked before, with %1 the table and %2 the number of selected rows; empty where nothing is
    // lost. The first is for one row.
    const char *questionOfOne;
    const char *question;
    void (OrvaneDatabaseView::*run)();
};

namespace {

const RowCommand commands[] = {
    {"addRows", OvTranslation::noop("&Add Rows..."), "Ctrl+Shift+N",
     OvTranslation::noop("Put a new row together in the row viewer and add it"), Of::WritableTable, false, "",
     "", &OrvaneDatabaseView::addRows},
    {"markSelected", OvTranslation::noop("&Mark Selected Rows For Deletion"), "",
     OvTranslation::noop("Empty the records of the selected rows; crunching the table removes them"),
     Of::WritableTable, true,
     OvTranslation::noop(
         "Empty 1 row of '%1'? Its values are lost. The row itself goes when the table is crunched."),
     OvTranslation::noop(
         "Empty %2 rows of '%1'? Their values are lost. The rows themselves go when the table is crunched."),
     &OrvaneDatabaseView::markSelected},
    {"crunch", OvTranslation::noop("&Crunch Table"), "",
     OvTranslation::noop("Remove the empty records of the table"), Of::WritableTable, false,
     OvTranslation::noop("Remove the empty records of '%1'? The records behind them get other numbers."),
     OvTranslation::noop("Remove the empty records of '%1'? The records behind them get other numbers."),
     &OrvaneDatabaseView::crunch},
    {"deleteSelectedRows", OvTranslation::noop("&Delete Selected Rows From View"), "",
     OvTranslation::noop("Take the selected rows out of the view; the records stay"), Of::View, true, "", "",
     &OrvaneDatabaseView::deleteSelectedViewRows},
    {"deleteOtherVisibleRows", OvTranslation::noop("Delete Other &Visible Rows From View"), "",
     OvTranslation::noop("Of the rows on the screen keep the selected ones; the records stay"), Of::View,
     true, "", "", &OrvaneDatabaseView::deleteOtherVisibleViewRows},
    {"deleteAllOtherRows", OvTranslation::noop("Delete All &Other Rows From View"), "",
     OvTranslation::noop("Keep the selected rows alone in the view; the records stay"), Of::View, true, "",
     "", &OrvaneDatabaseView::deleteAllOtherViewRows},
};

} // namespace

RowsMenu::RowsMenu(MainWindow &window, QMenuBar &bar)
    : QObject(&window), m_window(window), m_menu(bar.addMenu(tr("&Rows")))
{
    m_menu->setObjectName("rowsMenu");
    m_menu->setToolTipsVisible(true);
    m_allowEdits = m_menu->addAction(tr("Allow &Edits"));
    m_allowEdits->setObjectName("allow_edits");
    m_allowEdits->setCheckable(true);
    connect(m_allowEdits, &QAction::triggered, this, &RowsMenu::allowEdits);
    m_newTables = m_menu->addMenu(tr("&New Table"));
    m_newTables->setObjectName("newTableMenu");
    const RowCommand *before = nullptr;
    for (const RowCommand &command : commands) {
        if (before == nullptr || before->of != command.of) {
            m_menu->addSeparator();
        }
        addCommand(command);
        before = &command;
    }
    connect(m_menu, &QMenu::aboutToShow, this, &RowsMenu::update);
    connect(m_newTables, &QMenu::aboutToShow, this, &RowsMenu::fillNewTables);
}

void RowsMenu::addCommand(const RowCommand &command)
{
    QAction *action = m_menu->addAction(OvTranslation::tr(command.text));
    action->setObjectName(command.name);
    action->setShortcut(QKeySequence(command.keys, QKeySequence::PortableText));
    action->setToolTip(OvTranslation::tr(command.tip));
    connect(action, &QAction::triggered, this, [this, &command] { run(command); });
    m_commands.insert(&command, action);
}

OrvaneTableModel *RowsMenu::table() const
{
    OrvaneDatabaseView *view = m_window.view();
    return view == nullptr ? nullptr : view->getCurrentTableModel();
}

bool RowsMenu::databaseIsWritable() const
{
    return m_window.hasDatabase() && m_window.mode() == "r+";
}

// Editing is off in every new window and is not remembered: who wants it says so.
void RowsMenu::allowEdits(bool allowed)
{
    m_window.application().config().configure("allow_edits", allowed);
    update();
}

void RowsMenu::update()
{
    OrvaneTableModel *shown = table();
    const bool isView = shown != nullptr && shown->tableIsView();
    const bool isWritable = shown != nullptr && !isView && shown->tableIsWritable();
    // Every selection may change while the menu is closed, and a shortcut asks nothing of the menu.
    const bool hasSelection = !m_menu->isVisible() || selectedRows() > 0;
    for (auto command = m_commands.cbegin(); command != m_commands.cend(); ++command) {
        const bool fits = command.key()->of == Of::View ? isView : isWritable;
        command.value()->setEnabled(fits && (hasSelection || !command.key()->needsSelection));
    }
    m_allowEdits->setEnabled(databaseIsWritable());
    m_allowEdits->setChecked(m_window.application().config()["allow_edits"].toBool());
    m_allowEdits->setToolTip(
        m_allowEdits->isEnabled()
            ? tr("Let cells be changed by typing into them")
            : tr("The database is open for reading only. Open it again to read and write."));
    m_newTables->setEnabled(databaseIsWritable());
}

void RowsMenu::fillNewTables()
{
    m_newTables->clear();
    if (m_window.model() == nullptr) {
        return;
    }
    for (const QString &name : m_window.model()->getEmptyTableNames()) {
        QAction *action = m_newTables->addAction(QString(name).replace('&', "&&"));
        connect(action, &QAction::triggered, this, [this, name] {
            if (OrvaneDatabaseView *view = m_window.view()) {
                view->createNewTable(name);
            }
        });
    }
}

int RowsMenu::selectedRows() const
{
    OrvaneDatabaseView *view = m_window.view();
    OrvaneTableView *shown = view == nullptr ? nullptr : view->getCurrentTableView();
    return shown == nullptr ? 0 : shown->selectedRowCount();
}

bool RowsMenu::isWanted(const RowCommand &command)
{
    if (*command.question == '\0') {
        return true;
    }
    const int rows = selectedRows();
    const QString question = OvTranslation::tr(rows == 1 ? command.questionOfOne : command.question)
                                 .replace("%2", QLocale(QLocale::English).toString(rows))
                                 .replace("%1", table()->getTableName());
    return QMessageBox::question(&m_window, OvTranslation::tr(command.text).remove('&'), question,
                                 QMessageBox::Yes | QMessageBox::Cancel,
                                 QMessageBox::Cancel) == QMessageBox::Yes;
}

void RowsMenu::run(const RowCommand &command)
{
    OrvaneDatabaseView *view = m_window.view();
    if (table() == nullptr || (command.needsSelection && selectedRows() == 0) || !isWanted(command)) {
        return;
    }
    (view->*command.run)();
    view->updateStatusLabels(); // a view doesn't tell by itself that it has fewer rows
}
