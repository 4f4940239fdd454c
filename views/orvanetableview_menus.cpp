// The context menus of the table view.
#include <orvanetableview.h>

#include <map>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLocale>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

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

struct OrvaneTableView::ColumnRows {
    int column = 0;
    OrvaneTableModel::RowRanges rows;
};

namespace {

QString number(qint64 count)
{
    return QLocale(QLocale::English).toString(count);
}

qint64 countOf(const OrvaneTableModel::RowRanges &rows)
{
    qint64 count = 0;
    for (const auto &[first, last] : rows) {
        count += last - first + 1;
    }
    return count;
}

// What is asked and told, with the value as it is: it may hold a percent sign.
QString filled(const char *text, const QString &first, const QString &second, const QString &third,
               const QString &value)
{
    QString whole;
    const QString parts = OvTranslation::tr(text);
    for (int at = 0; at < parts.size(); ++at) {
        const int place = parts[at] == '%' && at + 1 < parts.size() ? parts[at + 1].digitValue() : -1;
        if (place < 1 || place > 4) {
            whole += parts[at];
            continue;
        }
        whole += place == 1 ? first : place == 2 ? second : place == 3 ? third : value;
        ++at;
    }
    return whole;
}

} // namespace

// The host says whether it wants the user to be asked.
bool OrvaneTableView::isChangeWanted(const QString &question) const
{
    if (!m_config["ask_before_changing_rows"].toBool()) {
        return true;
    }
    QMessageBox box(QMessageBox::Question, OvTranslation::tr("Change Values"), question, QMessageBox::Cancel,
                    window());
    QPushButton *change = box.addButton(OvTranslation::tr("Change"), QMessageBox::AcceptRole);
    change->setObjectName("change");
    box.setDefaultButton(change);
    box.setTextFormat(Qt::PlainText);
    box.exec();
    return box.clickedButton() == change;
}

// Those that are shown, whatever their columns.
std::vector<OrvaneTableView::ColumnRows> OrvaneTableView::selectedCells() const
{
    std::map<int, OrvaneTableModel::RowRanges> rows;
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        for (int column = range.left(); column <= range.right(); ++column) {
            if (!isColumnHidden(column)) {
                rows[column].append({range.top(), range.bottom()});
            }
        }
    }
    std::vector<ColumnRows> cells;
    for (const auto &[column, ranges] : rows) {
        cells.push_back({column, ranges});
    }
    return cells;
}

void OrvaneTableView::changeSelected(const QString &value)
{
    const std::vector<ColumnRows> cells = selectedCells();
    qint64 count = 0;
    for (const ColumnRows &column : cells) {
        count += countOf(column.rows);
    }
    const char *question = OvTranslation::noop("Put '%4' into %1 cells in %2 rows of '%3'?");
    const QPointer<OrvaneTableModel> model = m_model;
    if (count > 1 && !isChangeWanted(filled(question, number(count), number(selectedRowCount()),
                                            m_model->getTableName(), value))) {
        return;
    }
    if (model != nullptr && model == m_model && isStillThere()) {
        store(value, cells);
    }
}

void OrvaneTableView::changeAll(int column, const QString &value)
{
    const int rows = m_model->rowCount();
    const char *question = OvTranslation::noop("Change '%1' to '%4' in all %2 rows of '%3'?");
    const QPointer<OrvaneTableModel> model = m_model;
    if (rows > 1 && !isChangeWanted(filled(question, m_model->fieldNameForColumnIndex(column), number(rows),
                                           m_model->getTableName(), value))) {
        return;
    }
    if (model != nullptr && model == m_model && rows > 0 && isStillThere()) {
        store(value, {{column, {{0, rows - 1}}}});
    }
}

// Stores one value in many cells, as one step for who takes changes back. What is refused is told once, with
// the first reason and how often.
void OrvaneTableView::store(const QString &value, const std::vector<ColumnRows> &cells)
{
    const ChangeStep step;
    const QPointer<OrvaneTableModel> model = m_model;
    qint64 wanted = 0;
    qint64 stored = 0;
    QString reason;
    bool cancelled = false;
    for (const ColumnRows &column : cells) {
        wanted += countOf(column.rows);
        if (cancelled || model == nullptr) {
            continue;
        }
        if (column.column == 0) { // the numbers of records can't be changed
            continue;
        }
        const OrvaneTableModel::RowsStored done = model->setRowsData(column.rows, column.column, value);
        stored += done.reason.isEmpty() ? countOf(column.rows) : done.stored;
        reason = reason.isEmpty() ? done.reason : reason;
        cancelled = done.cancelled;
    }
    if (reason.isEmpty()) {
        return;
    }
    qovutil_showError(cancelled ? filled(OvTranslation::noop("Stopped: '%4' was stored in %1 of %2 cells."),
                                         number(stored), number(wanted), QString(), value)
                                : filled(OvTranslation::noop("'%4' was not stored in %1 cells: %2"),
                                         number(wanted - stored), reason, QString(), value),
                      nullptr);
}
