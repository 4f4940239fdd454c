#include "printing.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <QDateTime>
#include <QFile>
#include <QItemSelectionModel>
#include <QLocale>
#include <QMessageBox>
#include <QMetaObject>
#include <QPaintEngine>
#include <QPainter>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qovutil.h>

#include "cell_grid.h"
#include "printed_table.h"
#include "sentences.h"

namespace {

constexpr qint64 pagesPrintedUnasked = 100;
constexpr qint64 mostPages = 2000; // the preview keeps all of them

// So many rows are never less than the most pages, and looking through them would take long.
constexpr qint64 mostRows = 400000;

CellGrid allRows(const OrvaneTableView &view)
{
    return {{{0, view.model()->rowCount()}}, shownColumns(view)};
}

std::vector<RowRun> selectedRows(const OrvaneTableView &view)
{
    // Of cells here and there their rows are meant: each with all its columns.
    std::vector<RowRun> runs;
    std::vector<std::pair<int, int>> ranges;
    for (const QItemSelectionRange &range : view.selectionModel()->selection()) {
        ranges.emplace_back(range.top(), range.bottom() + 1);
    }
    std::sort(ranges.begin(), ranges.end());
    for (const auto &[first, end] : ranges) {
        if (!runs.empty() && first <= runs.back().end) {
            runs.back().end = std::max(runs.back().end, end);
        } else {
            runs.push_back({first, end});
        }
    }
    return runs;
}

// What is to be printed; none where the user cancels.
std::optional<CellGrid> askedGrid(const OrvaneTableView &view, QWidget *window)
{
    CellGrid all = allRows(view);
    CellGrid selected{selectedRows(view), all.columns};
    const qint64 rows = selected.rowCount();
    if (rows < 2 || rows == all.rowCount()) {
        return all;
    }
    QMessageBox question(QMessageBox::Question, OvTranslation::tr("Print"),
                         OvTranslation::tr("%1 rows are selected. Print only these, or all %2?")
                             .arg(counted(rows), counted(all.rowCount())),
                         QMessageBox::Cancel, window);
    const auto *those = question.addButton(OvTranslation::tr("&Selected Rows"), QMessageBox::AcceptRole);
    const auto *every = question.addButton(OvTranslation::tr("&All Rows"), QMessageBox::AcceptRole);
    question.exec();
    if (question.clickedButton() == those) {
        return selected;
    }
    return question.clickedButton() == every ? std::optional<CellGrid>(all) : std::nullopt;
}

TablePages pagesOn(QPrinter &printer, const PrintedTable &table, const QFont &font)
{
    const QRectF paper = printer.pageRect(QPrinter::DevicePixel);
    return TablePages(table, font, printer, QRectF(QPointF(0, 0), paper.size()));
}

bool showsPreview(const QPrinter &printer)
{
    return printer.paintEngine() != nullptr && printer.paintEngine()->type() == QPaintEngine::Picture;
}

// In a preview the toolkit deletes the pages of an aborted job, and once more with the printer.
void abortPrinting(QPrinter &printer)
{
    if (!showsPreview(printer)) {
        printer.abort();
    }
}

bool isWanted(qint64 pages, QWidget *window)
{
    if (pages > mostPages) {
        fail(OvTranslation::tr(
                 "Printed, these rows are %1 pages, and no more than %2 can be shown. Select the rows "
                 "that you want, or save the table as a text file.")
                 .arg(counted(pages), counted(mostPages)));
    }
    return pages <= pagesPrintedUnasked ||
           QMessageBox::question(
               window, OvTranslation::tr("Print"),
               OvTranslation::tr("Printed, these rows are %1 pages. Show them?").arg(counted(pages)),
               QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel) == QMessageBox::Yes;
}

} // namespace

bool printPages(const PrintedTable &table, const QFont &font, QPrinter &printer)
{
    const TablePages pages = pagesOn(printer, table, font);
    QPainter painter;
    if (!painter.begin(&printer)) {
        fail(printer.outputFileName().isEmpty()
                 ? OvTranslation::tr("The printer can't be used.")
                 : OvTranslation::tr("%1: the pages can't be written there.").arg(printer.outputFileName()));
    }
    // A range of pages that was chosen in the dialog, counted from 1; 0 stands for all.
    const qint64 first = printer.fromPage() > 0 ? printer.fromPage() - 1 : 0;
    const qint64 end =
        printer.toPage() > 0 ? std::min<qint64>(printer.toPage(), pages.pageCount()) : pages.pageCount();
    try {
        for (qint64 page = first; page < end; ++page) {
            if (page > first) {
                printer.newPage();
            }
            pages.paint(painter, page);
            if (dbreport_progress("print", static_cast<double>(page - first) /
                                               static_cast<double>(end - first)) != 0) {
                abortPrinting(printer);
                painter.end();
                return false;
            }
        }
    } catch (...) {
        abortPrinting(printer);
        throw;
    }
    return painter.end();
}

namespace {

// What an abort leaves of a file is no document.
void removeHalf(const QPrinter &printer)
{
    if (!printer.outputFileName().isEmpty()) {
        QFile::remove(printer.outputFileName());
    }
}

// A preview that isn't whole isn't shown; where printing fails it stays, for another try.
void printOrSayWhy(const PrintedTable &table, const QFont &font, QPrinter &printer, QDialog &preview)
{
    bool whole = false;
    try {
        whole = printPages(table, font, printer);
    } catch (const std::exception &error) {
        qovutil_showError(QString::fromUtf8(error.what()), &preview);
    }
    if (whole) {
        return;
    }
    if (showsPreview(printer)) {
        QMetaObject::invokeMethod(&preview, &QDialog::reject, Qt::QueuedConnection);
    } else {
        removeHalf(printer);
    }
}

} // namespace

void printTable(OrvaneTableView &view, const QString &title, QWidget *window)
{
    const QPointer<OrvaneTableView> guarded = &view;
    if (view.model() == nullptr || view.selectionModel() == nullptr) {
        return;
    }
    const std::optional<CellGrid> grid = askedGrid(view, window);
    if (!grid.has_value() || guarded == nullptr || view.model() == nullptr) {
        return;
    }
    if (grid->columns.isEmpty()) {
        fail(OvTranslation::tr("No column is shown, so there is nothing to print."));
    }
    if (grid->rowCount() > mostRows) {
        fail(OvTranslation::tr(
                 "%1 rows are too many to be printed. Select the rows that you want, or save the table "
                 "as a text file.")
                 .arg(counted(grid->rowCount())));
    }
    const QFont font = view.font();
    PrintedTable table(*view.model(), *grid, title,
                       QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat));
    if (!table.measure()) {
        return;
    }
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(title);
    if (!isWanted(pagesOn(printer, table, font).pageCount(), window)) {
        return;
    }
    QPrintPreviewDialog preview(&printer, window);
    preview.setWindowTitle(OvTranslation::tr("Print %1").arg(title));
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview,
                     [&](QPrinter *target) { printOrSayWhy(table, font, *target, preview); });
    preview.exec();
}
