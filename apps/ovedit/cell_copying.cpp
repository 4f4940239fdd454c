#include "cell_copying.h"

#include <algorithm>

#include <QClipboard>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPointer>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "cell_grid.h"
#include "readable_rows.h"
#include "sentences.h"
#include "tab_separated.h"

namespace {

constexpr int rowsAtOnce = 512;
constexpr qint64 charactersCopiedUnasked = 32000000;
constexpr qint64 mostCharacters = 500000000; // a text of the toolkit holds no more than twice as many
constexpr qint64 bytesOfMegabyte = 1000000;

// How long the text will be, about: of each column as many characters as it is wide.
qint64 expectedLength(const OrvaneTableModel &table, const CellGrid &grid)
{
    qint64 ofRow = 0;
    for (const int column : grid.columns) {
        ofRow += table.approxColumnWidthChars(column) + 1;
    }
    return ofRow * grid.rowCount();
}

bool isWanted(qint64 length, const CellGrid &grid, QWidget *window)
{
    const QString megabytes = counted(length * static_cast<qint64>(sizeof(QChar)) / bytesOfMegabyte);
    if (length > mostCharacters) {
        fail(OvTranslation::tr(
                 "%1 rows of %2 columns are about %3 MB of text, too much for the clipboard. Save "
                 "the table as a text file, or copy a part of it.")
                 .arg(counted(grid.rowCount()), counted(grid.columns.size()), megabytes));
    }
    return length <= charactersCopiedUnasked ||
           QMessageBox::question(
               window, OvTranslation::tr("Copy"),
               OvTranslation::tr(
                   "Copy %1 rows of %2 columns? They take about %3 MB of memory for as long as they "
                   "are in the clipboard.")
                   .arg(counted(grid.rowCount()), counted(grid.columns.size()), megabytes),
               QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel) == QMessageBox::Yes;
}

class GridText
{
public:
    GridText(OrvaneTableModel &table, const CellGrid &grid, qint64 length) : m_table(&table), m_grid(grid)
    {
        m_text.reserve(static_cast<int>(std::min(length, mostCharacters)));
    }

    void appendHeader()
    {
        for (int i = 0; i < m_grid.columns.size(); ++i) {
            separate(i);
            appendCell(m_text, m_table->headerData(m_grid.columns[i], Qt::Horizontal).toString());
        }
        m_text += '\n';
    }

    // False where the user cancels.
    bool appendRows()
    {
        const qint64 rows = m_grid.rowCount();
        qint64 done = 0;
        for (const RowRun &run : m_grid.rows) {
            for (int first = run.first; first < run.end; first += rowsAtOnce) {
                const int end = std::min(first + rowsAtOnce, run.end);
                appendRows(first, end);
                done += end - first;
                if (dbreport_progress("copy", static_cast<double>(done) / static_cast<double>(rows)) != 0) {
                    return false;
                }
            }
        }
        return true;
    }

    const QString &text() const { return m_text; }

private:
    void appendRows(int first, int end)
    {
        checkReadable(m_table, first, end);
        const QStringList cells = m_table->displayedTexts(m_grid.columns, first, end);
        const int columns = m_grid.columns.size();
        for (int i = 0; i < cells.size(); ++i) {
            separate(i % columns);
            appendCell(m_text, cells[i]);
            if (i % columns == columns - 1) {
                m_text += '\n';
            }
        }
        if (m_text.size() > 2 * mostCharacters) {
            fail(OvTranslation::tr("The cells are too much text for the clipboard. Copy a part of them."));
        }
    }

    void separate(int place)
    {
        if (place > 0) {
            m_text += '\t';
        }
    }

    QPointer<OrvaneTableModel> m_table; // events are let in while progress is told
    const CellGrid &m_grid;
    QString m_text;
};

// One cell is put into a line of text, of a dialog say, without the end of a line. A null one keeps it, or
// there would be nothing to paste.
QString withoutEndOfLine(const QString &text, const CellGrid &grid, bool withHeader)
{
    const bool isOneCell = grid.cellCount() == 1 && !withHeader;
    return isOneCell && text.size() > 1 ? text.chopped(1) : text;
}

} // namespace

void copySelectedCells(OrvaneTableView &view, bool withHeader, QWidget *window)
{
    const std::optional<CellGrid> grid = selectedGrid(view);
    if (!grid.has_value()) {
        fail(OvTranslation::tr(
            "The selected cells don't make up a table: in each row the same columns must be "
            "selected. Nothing was copied."));
    }
    OrvaneTableModel *table = view.model();
    if (table == nullptr || grid->isEmpty()) {
        return;
    }
    const QPointer<OrvaneTableModel> guarded = table;
    const qint64 length = expectedLength(*table, *grid);
    if (!isWanted(length, *grid, window) || guarded == nullptr) {
        return;
    }
    GridText text(*table, *grid, length);
    if (withHeader) {
        text.appendHeader();
    }
    if (text.appendRows()) {
        QGuiApplication::clipboard()->setText(withoutEndOfLine(text.text(), *grid, withHeader));
    }
}
