// The context menus of the table view.
#include <orvanetableview.h>

#include <QAction>
#include <QApplication>
#include <QMenu>

#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <qdbptr.h>
#include <qovutil.h>

#include "slot_guard.h"

struct OrvaneTableView::CellCommand {
    const char *text;
    void (OrvaneTableView::*run)(const QModelIndex &cell);
};

void OrvaneTableView::showCellContextMenu(QPoint pos)
{
    static const CellCommand commands[] = {
        {"Find Backward", &OrvaneTableView::findBackward},
        {"Find Forward", &OrvaneTableView::findForward},
        {"Subset", &OrvaneTableView::requestSubset},
    };
    const QPointer<OrvaneTableView> self = this; // the owner may drop the view while the menu is open
    const QPointer<QMenu> menu = new QMenu(this);
    menu->setObjectName("cellMenu");
    for (const CellCommand &command : commands) {
        menu->addAction(OvTranslation::tr(command.text))->setEnabled(indexAt(pos).isValid());
    }
    const QList<QAction *> entries = menu->actions();
    const QAction *chosen = menu->exec(viewport()->mapToGlobal(pos));
    const int entry = entries.indexOf(const_cast<QAction *>(chosen));
    if (self == nullptr) {
        return;
    }
    menu->deleteLater();
    showingErrors([&] {
        if (entry >= 0) {
            runCellCommand(commands[entry], indexAt(pos));
        } else if (chosen != nullptr) {
            qovutil_showError(
                OvTranslation::tr(
                    "Unexpected error: unknown action selected in OrvaneTableView::showCellContextMenu()"),
                nullptr);
        }
    });
}

void OrvaneTableView::runCellCommand(const CellCommand &command, const QModelIndex &cell)
{
    if (m_model != nullptr && cell.isValid()) {
        (this->*command.run)(m_model->addQdbptrToIndex(cell));
    }
}

void OrvaneTableView::requestSubset(const QModelIndex &cell)
{
    emit subsetRequested(m_model->fieldNameForColumnIndex(cell.column()),
                         m_model->data(cell, Qt::UserRole).toString());
}

void OrvaneTableView::findBackward(const QModelIndex &cell)
{
    findEqualCell(cell, true);
}

void OrvaneTableView::findForward(const QModelIndex &cell)
{
    findEqualCell(cell, false);
}

// Quotes inside the value are left as they are: meant.
void OrvaneTableView::findEqualCell(const QModelIndex &cell, bool backward)
{
    const QString field = m_model->fieldNameForColumnIndex(cell.column());
    const QString expression = field + " == '" + m_model->data(cell, Qt::UserRole).toString() + "'";
    auto *record = static_cast<QDbptr *>(cell.internalPointer());
    const QPointer<OrvaneTableView> self = this; // a long search may let events through
    const int row = record->dbFind(expression, backward);
    if (self == nullptr) {
        return;
    }
    if (row < 0) {
        QApplication::beep();
    } else {
        scrollToCell(row, field);
    }
}
