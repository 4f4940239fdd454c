// Changing many cells of the table view at once.
#include <orvanetableview.h>

#include <exception>
#include <map>

#include <QItemSelectionModel>
#include <QMessageBox>
#include <QPushButton>

#include <orvane/numbers.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qovutil.h>

#include "record_keys.h"
#include "whole_change.h"

struct OrvaneTableView::ColumnRows {
    int column = 0;
    OrvaneTableModel::RowRanges rows;
};

// What became of a change of many cells.
struct OrvaneTableView::Stored {
    qint64 wanted = 0; // cells
    qint64 stored = 0;
    QString reason; // why not all, the first one; empty when all were
    bool cancelled = false;

    void add(const OrvaneTableModel::RowsStored &rows, qint64 count)
    {
        stored += rows.reason.isEmpty() ? count : rows.stored;
        reason = reason.isEmpty() ? rows.reason : reason;
        cancelled = rows.cancelled;
    }
};

namespace {

QString number(qint64 count)
{
    return OvNumbers::counted(count);
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

// Why the value can't be in all of the cells, as far as that is seen before any is changed.
QString OrvaneTableView::refusal(const QString &value, const std::vector<ColumnRows> &cells,
                                 RecordKeys &keys) const
{
    for (const ColumnRows &column : cells) {
        if (column.column == 0) { // passed over
            continue;
        }
        const QString refused =
            m_model->refusal(m_model->index(column.rows.first().first, column.column), value);
        if (!refused.isEmpty()) {
            return refused;
        }
        const bool isAll = !m_model->tableIsView() && countOf(column.rows) == m_model->rowCount();
        const QStringList same = keys.note(*m_model, column.column, isAll);
        if (!same.isEmpty()) {
            return RecordKeys::sentence(same);
        }
    }
    return {};
}

void OrvaneTableView::lookForSameKeys(const RecordKeys &keys, const OrvaneTableModel &model, Stored &done)
{
    try {
        const QStringList same = keys.met(model);
        done.reason = same.isEmpty() ? QString() : RecordKeys::sentence(same);
    } catch (const std::exception &error) {
        done.reason = QString::fromUtf8(error.what());
        done.cancelled = true;
    }
}

// Stores one value in many cells, as one step for who takes changes back.
void OrvaneTableView::store(const QString &value, const std::vector<ColumnRows> &cells)
{
    const WholeChange change(*m_model);
    const QPointer<OrvaneTableModel> model = m_model;
    RecordKeys keys;
    Stored done;
    if (change.isKept()) {
        done.reason = refusal(value, cells, keys);
    }
    for (const ColumnRows &column : cells) {
        done.wanted += countOf(column.rows);
        // The numbers of records can't be changed.
        if (column.column > 0 && model != nullptr && !done.cancelled &&
            (!change.isKept() || done.reason.isEmpty())) {
            done.add(model->setRowsData(column.rows, column.column, value), countOf(column.rows));
        }
    }
    if (change.isKept() && done.reason.isEmpty() && model != nullptr) {
        lookForSameKeys(keys, *model, done);
    }
    if (!done.reason.isEmpty()) {
        tellNotStored(value, done, change);
    }
}

// What is refused is told once, with the first reason and how often.
void OrvaneTableView::tellNotStored(const QString &value, const Stored &done, const WholeChange &change)
{
    const bool isStarted = done.stored > 0 || done.cancelled;
    const QString left = change.isKept() && isStarted ? change.putBack() : QString();
    if (change.isKept() && left.isEmpty()) {
        if (!done.cancelled) { // what one has asked for the host tells
            qovutil_showError(filled(OvTranslation::noop("No cell was changed: '%4' can't be stored: %2"),
                                     QString(), done.reason, QString(), value),
                              nullptr);
        }
        return;
    }
    const QString told = done.cancelled
                             ? filled(OvTranslation::noop("Stopped: '%4' was stored in %1 of %2 cells."),
                                      number(done.stored), number(done.wanted), QString(), value)
                             : filled(OvTranslation::noop("'%4' was not stored in %1 cells: %2"),
                                      number(done.wanted - done.stored), done.reason, QString(), value);
    qovutil_showError(left.isEmpty() ? told : told + "\n\n" + left, nullptr);
}
