#include "cell_pasting.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QPointer>
#include <QScopeGuard>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "cell_grid.h"
#include "error_text.h"
#include "sentences.h"
#include "tab_separated.h"

namespace {

constexpr qint64 cellsPastedUnasked = 10000;
constexpr double checkingShare = 0.3; // of the time; the rest is storing
constexpr int cellsAtOnce = 1024;

// The cells to be changed, as blocks, and what goes into them.
struct Pasting {
    std::vector<QStringList> values; // lines of equal length; one value alone goes into every cell
    std::vector<CellGrid> blocks;    // of several ones each is filled with the one value

    bool fills() const { return values.size() == 1 && values.front().size() == 1; }
    const QString &value(qint64 row, int column) const
    {
        return fills() ? values.front().front() : values[static_cast<std::size_t>(row)][column];
    }
    qint64 cellCount() const
    {
        qint64 count = 0;
        for (const CellGrid &block : blocks) {
            count += block.cellCount();
        }
        return count;
    }
};

// ---- What goes where ----------------------------------------------------------------------------------

std::vector<QStringList> clipboardCells()
{
    std::vector<QStringList> lines = tabSeparatedCells(QGuiApplication::clipboard()->text());
    if (lines.empty()) {
        fail(OvTranslation::tr("There is no text in the clipboard to be pasted."));
    }
    const int width = lines.front().size();
    for (std::size_t line = 1; line < lines.size(); ++line) {
        if (lines[line].size() != width) {
            fail(OvTranslation::tr(
                     "Nothing was pasted: line %1 of the clipboard has %2 values where the first has "
                     "%3.")
                     .arg(QString::number(line + 1), QString::number(lines[line].size()),
                          QString::number(width)));
        }
    }
    return lines;
}

// Every selected cell that is shown, by ranges.
std::vector<CellGrid> selectedBlocks(const OrvaneTableView &view)
{
    std::vector<CellGrid> blocks;
    const QVector<int> shown = shownColumns(view);
    for (const QItemSelectionRange &range : view.selectionModel()->selection()) {
        CellGrid block;
        block.rows.push_back({range.top(), range.bottom() + 1});
        std::copy_if(shown.begin(), shown.end(), std::back_inserter(block.columns),
                     [&](int column) { return column >= range.left() && column <= range.right(); });
        if (!block.isEmpty()) {
            blocks.push_back(block);
        }
    }
    return blocks;
}

// The block of the clipboard's size whose first cell is the first one selected.
CellGrid blockFrom(const OrvaneTableView &view, const std::vector<CellGrid> &selected, int height, int width)
{
    const QVector<int> shown = shownColumns(view);
    int top = selected.front().rows.front().first;
    int left = shown.size();
    for (const CellGrid &block : selected) {
        top = std::min(top, block.rows.front().first);
        left = std::min(left, shown.indexOf(block.columns.front()));
    }
    const int rowsThere = view.model()->rowCount() - top;
    if (height > rowsThere) {
        fail(OvTranslation::tr(
                 "Nothing was pasted: the clipboard has %1 rows, and from row %2 on there are only "
                 "%3. Rows are added with Add Rows.")
                 .arg(counted(height), QString::number(top), counted(rowsThere)));
    }
    if (width > shown.size() - left) {
        fail(OvTranslation::tr(
                 "Nothing was pasted: the clipboard has %1 columns, and from column %2 on only %3 "
                 "are shown.")
                 .arg(QString::number(width), view.model()->fieldNameForColumnIndex(shown[left]),
                      QString::number(shown.size() - left)));
    }
    CellGrid block;
    block.rows.push_back({top, top + height});
    block.columns = shown.mid(left, width);
    return block;
}

Pasting planned(OrvaneTableView &view)
{
    Pasting pasting;
    pasting.values = clipboardCells();
    pasting.blocks = selectedBlocks(view);
    if (pasting.blocks.empty()) {
        fail(OvTranslation::tr("Select the cell where pasting is to begin."));
    }
    if (!pasting.fills()) {
        pasting.blocks = {blockFrom(view, pasting.blocks, static_cast<int>(pasting.values.size()),
                                    pasting.values.front().size())};
    }
    return pasting;
}

// ---- Checking and storing -----------------------------------------------------------------------------

// Some cells of a column that are to be changed, and what goes into them, as the model takes it.
struct ColumnCells {
    int column = 0;
    QVector<int> rows;
    QStringList values;
};

// The rows in which each value goes, for equal ones are stored together.
std::map<QString, OrvaneTableModel::RowRanges> rowsByValue(const ColumnCells &cells)
{
    std::map<QString, OrvaneTableModel::RowRanges> rows;
    for (int i = 0; i < cells.rows.size(); ++i) {
        OrvaneTableModel::RowRanges &ranges = rows[cells.values[i]];
        const int row = cells.rows[i];
        if (!ranges.isEmpty() && ranges.last().second + 1 == row) {
            ranges.last().second = row;
        } else {
            ranges.append({row, row});
        }
    }
    return rows;
}

class CellPaster
{
public:
    CellPaster(OrvaneTableModel &table, const Pasting &pasting)
        : m_table(&table), m_pasting(pasting), m_cells(pasting.cellCount())
    {
    }

    // Finds the cells that show something else: one that shows the value has it, for what is shown may have
    // fewer digits than what is stored. Throws at the first value that does not fit. False where the user
    // cancels.
    bool check()
    {
        qint64 done = 0;
        for (const CellGrid &block : m_pasting.blocks) {
            const int rowsAtOnce = std::max(1, cellsAtOnce / block.columns.size());
            qint64 line = 0;
            for (const RowRun &run : block.rows) {
                for (int first = run.first; first < run.end; first += rowsAtOnce) {
                    const int end = std::min(first + rowsAtOnce, run.end);
                    checkRows(block, first, end, line);
                    line += end - first;
                    done += static_cast<qint64>(end - first) * block.columns.size();
                    if (!report(0, checkingShare, done, m_cells)) {
                        return false;
                    }
                }
            }
        }
        return true;
    }

    // Throws at the first cells that can't be stored. False where the user cancels. What is stored is one
    // step to be taken back.
    bool store()
    {
        dbbegin_step();
        const auto end = qScopeGuard([] { dbend_step(); });
        for (const ColumnCells &cells : m_changed) {
            for (const auto &[value, rows] : rowsByValue(cells)) {
                checkThere(m_table != nullptr && m_table->isCurrent());
                const OrvaneTableModel::RowsStored done = m_table->setRowsData(rows, cells.column, value);
                if (!done.reason.isEmpty() && !done.cancelled) {
                    fail(OvTranslation::tr(
                             "Row %1, %2: '%3' can't be stored: %4 %5 cells were changed before.")
                             .arg(QString::number(rows.first().first),
                                  m_table->fieldNameForColumnIndex(cells.column), value,
                                  withoutCall(done.reason), counted(m_stored + done.stored)));
                }
                m_stored += done.stored;
                if (done.cancelled || !report(checkingShare, 1, m_stored, m_toStore)) {
                    return false;
                }
            }
        }
        return true;
    }

    qint64 storedCount() const { return m_stored; }

private:
    // As the model takes it.
    static QString stored(const QString &value) { return value.isNull() ? QStringLiteral("NULL") : value; }

    void checkThere(bool isThere) const
    {
        if (!isThere) {
            fail(OvTranslation::tr("The table has gone meanwhile. %1 cells were changed.")
                     .arg(counted(m_stored)));
        }
    }

    // The rows [first, end) of a block, into which the lines from `line` on go.
    void checkRows(const CellGrid &block, int first, int end, qint64 line)
    {
        checkThere(m_table != nullptr);
        const QStringList shown = m_table->displayedTexts(block.columns, first, end);
        const int columns = block.columns.size();
        checkThere(shown.size() == (end - first) * columns);
        for (int i = 0; i < columns; ++i) {
            ColumnCells cells;
            cells.column = block.columns[i];
            for (int row = first; row < end; ++row) {
                const QString &value = m_pasting.value(line + row - first, i);
                const QString &there = shown[(row - first) * columns + i];
                if (value != there || value.isNull() != there.isNull()) {
                    checkCell(m_table->index(row, cells.column), value);
                    cells.rows.append(row);
                    cells.values.append(stored(value));
                }
            }
            if (!cells.rows.isEmpty()) {
                m_toStore += cells.rows.size();
                m_changed.push_back(cells);
            }
        }
    }

    void checkCell(const QModelIndex &cell, const QString &value) const
    {
        const QString reason = m_table->flags(cell) & Qt::ItemIsEditable
                                   ? m_table->refusal(cell, stored(value))
                                   : OvTranslation::tr("it can't be changed");
        if (!reason.isEmpty()) {
            fail(OvTranslation::tr("Nothing was pasted. Row %1, %2: '%3' can't be stored: %4")
                     .arg(QString::number(cell.row()), m_table->fieldNameForColumnIndex(cell.column()), value,
                          withoutCall(reason)));
        }
    }

    static bool report(double from, double to, qint64 done, qint64 all)
    {
        return dbreport_progress("paste", from + (to - from) * static_cast<double>(done) /
                                                     static_cast<double>(all)) == 0;
    }

    QPointer<OrvaneTableModel> m_table; // events are let in while progress is told
    const Pasting &m_pasting;
    const qint64 m_cells;
    std::vector<ColumnCells> m_changed;
    qint64 m_toStore = 0;
    qint64 m_stored = 0;
};

bool isWanted(const Pasting &pasting, QWidget *window)
{
    const qint64 cells = pasting.cellCount();
    return cells <= cellsPastedUnasked ||
           QMessageBox::question(
               window, OvTranslation::tr("Paste"), OvTranslation::tr("Change %1 cells?").arg(counted(cells)),
               QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel) == QMessageBox::Yes;
}

} // namespace

void pasteCells(OrvaneTableView &view, QWidget *window)
{
    const QPointer<OrvaneTableModel> table = view.model();
    if (table == nullptr || view.selectionModel() == nullptr) {
        return;
    }
    const Pasting pasting = planned(view);
    if (!isWanted(pasting, window) || table == nullptr) {
        return;
    }
    CellPaster paster(*table, pasting);
    if (!paster.check()) {
        return;
    }
    if (!paster.store() && paster.storedCount() > 0) {
        fail(OvTranslation::tr("Pasting was cancelled. %1 cells were changed before.")
                 .arg(counted(paster.storedCount())));
    }
}
