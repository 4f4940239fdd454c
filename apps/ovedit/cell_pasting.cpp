#include "cell_pasting.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QScopeGuard>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "cell_grid.h"
#include "tab_separated.h"

namespace {

constexpr qint64 cellsPastedUnasked = 10000;
constexpr double checkingShare = 0.3; // of the time; the rest is storing
constexpr int cellsBetweenReports = 64;

[[noreturn]] void fail(const QString &sentence)
{
    throw std::runtime_error(sentence.toStdString());
}

QString counted(qint64 number)
{
    return QLocale(QLocale::English).toString(number);
}

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

class CellPaster
{
public:
    CellPaster(OrvaneTableModel &table, const Pasting &pasting)
        : m_table(&table), m_pasting(pasting), m_cells(pasting.cellCount())
    {
    }

    // Throws at the first value that does not fit. False where the user cancels.
    bool check()
    {
        return eachChangedCell(0, checkingShare, [this](const QModelIndex &cell, const QString &value) {
            const QString reason = m_table->flags(cell) & Qt::ItemIsEditable
                                       ? m_table->refusal(cell, stored(value))
                                       : OvTranslation::tr("it can't be changed");
            if (!reason.isEmpty()) {
                fail(OvTranslation::tr("Nothing was pasted. Row %1, %2: '%3' can't be stored: %4")
                         .arg(QString::number(cell.row()), m_table->fieldNameForColumnIndex(cell.column()),
                              value, reason));
            }
        });
    }

    // Throws at the first value that can't be stored. False where the user cancels. What is stored is one
    // step to be taken back.
    bool store()
    {
        dbbegin_step();
        const auto end = qScopeGuard([] { dbend_step(); });
        return eachChangedCell(checkingShare, 1, [this](const QModelIndex &cell, const QString &value) {
            if (!m_table->setData(cell, stored(value), Qt::EditRole)) {
                fail(OvTranslation::tr("Row %1, %2: '%3' can't be stored: %4 %5 cells were changed before.")
                         .arg(QString::number(cell.row()), m_table->fieldNameForColumnIndex(cell.column()),
                              value, m_table->editError(), counted(m_stored)));
            }
            ++m_stored;
        });
    }

    qint64 storedCount() const { return m_stored; }

private:
    // As the model takes it.
    static QString stored(const QString &value) { return value.isNull() ? QStringLiteral("NULL") : value; }

    // Calls use(cell, value) for the cells that show something else, row by row. A cell that shows the value
    // has it: what is shown may have fewer digits than what is stored.
    template <class Use>
    bool eachChangedCell(double from, double to, Use use)
    {
        qint64 done = 0;
        for (const CellGrid &block : m_pasting.blocks) {
            qint64 line = 0;
            for (const RowRun &run : block.rows) {
                for (int row = run.first; row < run.end; ++row, ++line) {
                    pasteRow(block, row, line, use);
                    done += block.columns.size();
                    if (!report(from + (to - from) * static_cast<double>(done) / static_cast<double>(m_cells),
                                done)) {
                        return false;
                    }
                }
            }
        }
        return true;
    }

    template <class Use>
    void pasteRow(const CellGrid &block, int row, qint64 line, Use use)
    {
        if (m_table == nullptr) {
            fail(OvTranslation::tr("The table has gone meanwhile. %1 cells were changed.")
                     .arg(counted(m_stored)));
        }
        const QStringList shown = m_table->displayedTexts(block.columns, row, row + 1);
        for (int i = 0; i < block.columns.size(); ++i) {
            const QString &value = m_pasting.value(line, i);
            const bool isThere = value == shown[i] && value.isNull() == shown[i].isNull();
            if (!isThere) {
                use(m_table->index(row, block.columns[i]), value);
            }
        }
    }

    // Events are let in while progress is told: not at every cell.
    bool report(double fraction, qint64 done)
    {
        if (done < m_reportAt) {
            return true;
        }
        m_reportAt = done + cellsBetweenReports;
        return dbreport_progress("paste", fraction) == 0;
    }

    QPointer<OrvaneTableModel> m_table;
    const Pasting &m_pasting;
    const qint64 m_cells;
    qint64 m_reportAt = 0;
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
