#include "rows_menu.h"

#include <QAction>
#include <QItemSelectionModel>
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
#include "undo_history.h"

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
    // What is asked before, with %1 the table; empty where what is done can be undone.
    const char *question;
    void (OrvaneDatabaseView::*run)();
};

namespace {

const RowCommand commands[] = {
    {"addRows", OvTranslation::noop("&Add Rows..."), "Ctrl+Shift+N",
     OvTranslation::noop("Put a new row together in the row viewer and add it"), Of::WritableTable, false, "",
     &OrvaneDatabaseView::addRows},
    {"markSelected", OvTranslation::noop("&Mark Selected Rows For Deletion"), "",
     OvTranslation::noop("Empty the records of the selected rows; crunching the table removes them"),
     Of::WritableTable, true, "", &OrvaneDatabaseView::markSelected},
    {"crunch", OvTranslation::noop("&Crunch Table"), "",
     OvTranslation::noop("Remove the empty records of the table"), Of::WritableTable, false,
     OvTranslation::noop("Remove the empty records of '%1'? The records behind them get other numbers."),
     &OrvaneDatabaseView::crunch},
    {"deleteSelectedRows", OvTranslation::noop("&Delete Selected Rows From View"), "",
     OvTranslation::noop("Take the selected rows out of the view; the records stay"), Of::View, true, "",
     &OrvaneDatabaseView::deleteSelectedViewRows},
    {"deleteOtherVisibleRows", OvTranslation::noop("Delete Other &Visible Rows From View"), "",
     OvTranslation::noop("Of the rows on the screen keep the selected ones; the records stay"), Of::View,
     true, "", &OrvaneDatabaseView::deleteOtherVisibleViewRows},
    {"deleteAllOtherRows", OvTranslation::noop("Delete All &Other Rows From View"), "",
     OvTranslation::noop("Keep the selected rows alone in the view; the records stay"), Of::View, true, "",
     &OrvaneDatabaseView::deleteAllOtherViewRows},
};

} // namespace

RowsMenu::RowsMenu(MainWindow &window, QMenuBar &bar)
    : QObject(&window), m_window(window), m_menu(bar.addMenu(tr("&Rows")))
{
    m_menu->setObjectName("rowsMenu");
    m_menu->setToolTipsVisible(true);
    addHistory();
    m_menu->addSeparator();
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

// Undo and redo have no other menu to stand in: records are all that can be undone.
void RowsMenu::addHistory()
{
    m_undo = m_menu->addAction(tr("&Undo"), this, &RowsMenu::undo);
    m_undo->setObjectName("undo");
    m_undo->setShortcut(QKeySequence("Ctrl+Z", QKeySequence::PortableText));
    m_redo = m_menu->addAction(tr("&Redo"), this, &RowsMenu::redo);
    m_redo->setObjectName("redo");
    m_redo->setShortcut(QKeySequence("Ctrl+Shift+Z", QKeySequence::PortableText));
}

void RowsMenu::undo()
{
    if (UndoHistory *history = m_window.history()) {
        history->undo();
    }
}

void RowsMenu::redo()
{
    if (UndoHistory *history = m_window.history()) {
        history->redo();
    }
}

void RowsMenu::updateHistory()
{
    const UndoHistory *history = m_window.history();
    const QString undone = history == nullptr ? QString() : history->undoText();
    const QString redone = history == nullptr ? QString() : history->redoText();
    m_undo->setText(undone.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(undone));
    m_undo->setEnabled(!undone.isEmpty());
    m_redo->setText(redone.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(redone));
    m_redo->setEnabled(!redone.isEmpty());
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
        command.value()->setToolTip(
            OvTranslation::tr(command.key()->tip) +
            (command.value()->isEnabled() ? QString() : "\n" + whyNot(*command.key())));
    }
    updateHistory();
    m_allowEdits->setEnabled(databaseIsWritable());
    m_allowEdits->setChecked(m_window.application().config()["allow_edits"].toBool());
    m_allowEdits->setToolTip(
        m_allowEdits->isEnabled()
            ? tr("Let cells be changed by typing into them")
            : tr("The database is open for reading only. Open it again to read and write."));
    m_newTables->setEnabled(databaseIsWritable());
}

// In a sentence, for the tooltip of a command that is disabled.
QString RowsMenu::whyNot(const RowCommand &command) const
{
    OrvaneTableModel *shown = table();
    if (shown == nullptr) {
        return tr("No table is shown.");
    }
    if (command.of == Of::View && !shown->tableIsView()) {
        return tr("This is a table; rows are taken out of views.");
    }
    if (command.of == Of::WritableTable) {
        if (!databaseIsWritable()) {
            return tr("The database is open for reading only. Open it again to read and write.");
        }
        if (shown->tableIsView()) {
            return tr("This is a view; records are added, marked and removed in its tables.");
        }
        if (!shown->tableIsWritable()) {
            return tr("The file of the table can't be written.");
        }
    }
    return tr("No row is selected.");
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
    QString question = OvTranslation::tr(command.question).replace("%1", table()->getTableName());
    const UndoHistory *history = m_window.history();
    if (history != nullptr && history->hasStepsOf(table()->getDbptr().table)) {
        question += " " + tr("What was changed in the table before can't be undone any more.");
    }
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
