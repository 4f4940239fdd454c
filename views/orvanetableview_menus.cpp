// The context menus of the table view.
#include <orvanetableview.h>

#include <vector>

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenu>

#include <orvane/tr.h>

#include <orvanerowview.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qdbptr.h>
#include <qovutil.h>

#include "change_step.h"
#include "slot_guard.h"
#include "text_dialog.h"

struct OrvaneTableView::CellCommand {
    const char *text;
    void (OrvaneTableView::*run)(const QModelIndex &cell);
};

namespace {

struct MenuEntry {
    QString text;
    bool enabled = true;
};

// Runs a menu and answers the chosen entry's place, or -1. `further` actions stand below the entries and act
// by themselves. The owner may drop the view while the menu is open: then nothing is chosen.
int chooseFrom(const std::vector<MenuEntry> &entries, const char *objectName, const char *slot,
               QWidget *parent, const QPoint &place, const QList<QAction *> &further = {})
{
    const QPointer<QMenu> menu = new QMenu(parent);
    menu->setObjectName(objectName);
    for (const MenuEntry &entry : entries) {
        menu->addAction(entry.text)->setEnabled(entry.enabled);
    }
    const QList<QAction *> actions = menu->actions();
    if (!further.isEmpty()) {
        menu->addSeparator();
        menu->addActions(further);
    }
    QAction *chosen = menu->exec(place);
    if (menu == nullptr) {
        return -1;
    }
    menu->deleteLater();
    const int entry = actions.indexOf(chosen);
    if (chosen != nullptr && entry < 0 && !further.contains(chosen)) {
        qovutil_showError(
            OvTranslation::tr("Unexpected error: unknown action selected in OrvaneTableView::") + slot + "()",
            nullptr);
    }
    return entry;
}

} // namespace

void OrvaneTableView::showCellContextMenu(QPoint pos)
{
    static const CellCommand commands[] = {
        {OvTranslation::noop("Find Backward"), &OrvaneTableView::findBackward},
        {OvTranslation::noop("Find Forward"), &OrvaneTableView::findForward},
        {OvTranslation::noop("Subset"), &OrvaneTableView::requestSubset},
    };
    showingErrors([&] {
        std::vector<MenuEntry> entries;
        for (const CellCommand &command : commands) {
            entries.push_back({OvTranslation::tr(command.text), indexAt(pos).isValid()});
        }
        const int entry = chooseFrom(entries, "cellMenu", "showCellContextMenu", this,
                                     viewport()->mapToGlobal(pos), actions());
        if (entry >= 0) {
            runCellCommand(commands[entry], indexAt(pos));
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

namespace {

enum RowEntry { MarkRow, DeleteRow, ShowRow };
enum ColumnEntry { RemoveColumn, ChangeSelected, ChangeAll };

} // namespace

void OrvaneTableView::setOrvaneRowView(OrvaneRowView *rowView)
{
    m_rowView = rowView;
}

void OrvaneTableView::showRowContextMenu(QPoint pos)
{
    showingErrors([&] {
        // Beside the last column there is no cell, and the row is there all the same.
        const int row = rowAt(pos.y());
        if (m_model == nullptr || row < 0) {
            return;
        }
        const QModelIndex cell = m_model->addQdbptrToIndex(m_model->index(row, 1));
        auto *record = static_cast<QDbptr *>(cell.internalPointer());
        if (record == nullptr) {
            return;
        }
        // The table may change while the menu is open.
        const QPersistentModelIndex place = cell;
        const QString number = QString::number(record->getIndexRecord());
        const bool isView = record->tableIsView();
        std::vector<MenuEntry> entries = {
            {OvTranslation::tr("Mark Row %1 For Deletion From Table").arg(number),
             !isView && record->tableIsWritable()},
            {OvTranslation::tr("Delete Row %1 From View").arg(number), isView},
        };
        if (m_rowView != nullptr) {
            entries.push_back({OvTranslation::tr("Show Row %1").arg(number)});
        }
        const int entry = chooseFrom(entries, "rowMenu", "showRowContextMenu", this, mapToGlobal(pos));
        if (entry >= 0 && isStillThere() && place.isValid()) {
            runRowCommand(entry, m_model->addQdbptrToIndex(m_model->index(place.row(), 1)));
        }
    });
}

void OrvaneTableView::runRowCommand(int entry, const QModelIndex &row)
{
    auto *place = static_cast<QDbptr *>(row.internalPointer());
    if (place == nullptr) {
        return;
    }
    if (entry == ShowRow) {
        showInRowView(static_cast<int>(place->getIndexRecord()));
        return;
    }
    const ChangeStep step;
    QDbptr record(place->getConnection(), place->getDbptr());
    connect(&record, SIGNAL(dataChanged()), m_model, SIGNAL(modelReset()));
    record.dbMark();
    if (entry == DeleteRow) {
        record.dbCrunch();
    }
}

void OrvaneTableView::showInRowView(int row)
{
    if (m_rowView == nullptr) {
        return;
    }
    QMainWindow *window = m_rowView->mainWindow();
    window->hide();
    m_rowView->setModel(m_model, row);
    window->adjustSize();
    window->updateGeometry();
    window->show();
}

void OrvaneTableView::showColumnContextMenu(QPoint pos)
{
    showingErrors([&] {
        const int column = horizontalHeader()->logicalIndexAt(pos); // a table without rows has columns, too
        if (m_model == nullptr || column < 0) {
            return;
        }
        const QString field = m_model->fieldNameForColumnIndex(column);
        const std::vector<MenuEntry> entries = {
            {OvTranslation::tr("Remove Column '%1' From Display").arg(field)},
            {OvTranslation::tr("Change Selected '%1' Values").arg(field) + "..."},
            {OvTranslation::tr("Change All '%1' Values").arg(field) + "..."},
        };
        const int entry = chooseFrom(entries, "columnMenu", "showColumnContextMenu", this,
                                     horizontalHeader()->viewport()->mapToGlobal(pos));
        if (entry >= 0) {
            runColumnCommand(entry, column);
        }
    });
}

void OrvaneTableView::runColumnCommand(int entry, int column)
{
    if (m_model == nullptr) {
        return;
    }
    const QString field = m_model->fieldNameForColumnIndex(column);
    if (entry == RemoveColumn) {
        QList<QString> names = getFieldNamesVisible();
        names.removeAll(field);
        setFieldNamesVisible(names);
        return;
    }
    QString value;
    if (!askForValue(field, value) || m_model == nullptr) {
        return;
    }
    if (entry == ChangeSelected) {
        changeSelected(value);
    } else {
        changeAll(column, value);
    }
}

bool OrvaneTableView::askForValue(const QString &field, QString &value)
{
    const auto asked = [&field](const char *text) { return OvTranslation::tr(text) + " '" + field + "':"; };
    const std::optional<QString> answer = askForText(this, asked(OvTranslation::noop("Get Value for")),
                                                     asked(OvTranslation::noop("Value for")));
    value = answer.value_or(QString());
    return answer.has_value();
}
