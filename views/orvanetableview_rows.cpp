// Marking and deleting rows of the table view.
#include <orvanetableview.h>

#include <algorithm>

#include <QItemSelectionModel>

#include <orvane/numbers.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <qovutil.h>

#include "slot_guard.h"
#include "whole_change.h"

// The rows with a selected cell. Asked by ranges: of all cells of a large table there are too many to list.
std::vector<OrvaneTableView::RowRange> OrvaneTableView::selectedRows() const
{
    std::vector<RowRange> ranges;
    if (selectionModel() == nullptr) {
        return ranges;
    }
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        ranges.push_back({range.top(), range.bottom()});
    }
    std::sort(ranges.begin(), ranges.end(),
              [](const RowRange &a, const RowRange &b) { return a.first < b.first; });
    std::vector<RowRange> joined;
    for (const RowRange &range : ranges) {
        if (!joined.empty() && range.first <= joined.back().last + 1) {
            joined.back().last = std::max(joined.back().last, range.last);
        } else {
            joined.push_back(range);
        }
    }
    return joined;
}

int OrvaneTableView::selectedRowCount() const
{
    int count = 0;
    for (const RowRange &range : selectedRows()) {
        count += range.last - range.first + 1;
    }
    return count;
}

// What of [first, last] lies in none of the ranges, which are in order.
std::vector<OrvaneTableView::RowRange> OrvaneTableView::rowsBetween(const std::vector<RowRange> &ranges,
                                                                    int first, int last)
{
    std::vector<RowRange> others;
    for (const RowRange &range : ranges) {
        if (range.last < first) {
            continue;
        }
        if (range.first > last) {
            break;
        }
        if (range.first > first) {
            others.push_back({first, range.first - 1});
        }
        first = range.last + 1;
    }
    if (first <= last) {
        others.push_back({first, last});
    }
    return others;
}

void OrvaneTableView::markRows(const std::vector<RowRange> &ranges)
{
    if (m_model == nullptr || ranges.empty() || !isStillThere()) {
        return;
    }
    OrvaneTableModel::RowRanges rows;
    qint64 count = 0;
    for (const RowRange &range : ranges) {
        rows.append({range.first, range.last});
        count += range.last - range.first + 1;
    }
    // The flags of a view's rows are nothing to be put back.
    const bool isView = m_model->tableIsView();
    const WholeChange change(*m_model);
    const OrvaneTableModel::RowsStored done = m_model->markRows(rows);
    if (done.reason.isEmpty()) {
        return;
    }
    const bool isStarted = done.stored > 0 || done.cancelled;
    const QString left = change.isKept() && isStarted && !isView ? change.putBack() : QString();
    if (change.isKept() && !isView && left.isEmpty()) {
        if (!done.cancelled) { // what one has asked for the host tells
            qovutil_showError(OvTranslation::tr("No row was marked: %1").arg(done.reason), nullptr);
        }
        return;
    }
    const char *told = done.cancelled
                           ? OvTranslation::noop("Stopped: %1 of %2 rows are marked.")
                           : OvTranslation::noop("%1 of %2 rows are marked. The others are not: %3");
    const QString text = OvTranslation::tr(told)
                             .replace("%1", OvNumbers::counted(done.stored))
                             .replace("%2", OvNumbers::counted(count))
                             .replace("%3", done.reason);
    qovutil_showError(left.isEmpty() ? text : text + "\n\n" + left, nullptr);
}

void OrvaneTableView::markSelected()
{
    showingErrors([this] { markRows(selectedRows()); });
}

void OrvaneTableView::deleteSelectedViewRows()
{
    deleteRows([this] { return selectedRows(); });
}

void OrvaneTableView::deleteOtherVisibleViewRows()
{
    deleteRows([this] {
        const int first = indexAt(rect().topLeft()).row();
        const int end = m_model->rowCount() - 1;
        const int below = indexAt(rect().bottomRight()).row() >= 0 ? rowAt(viewport()->rect().height()) : end;
        return rowsBetween(selectedRows(), std::max(first, 0), below < 0 ? end : below);
    });
}

void OrvaneTableView::deleteAllOtherViewRows()
{
    deleteRows([this] { return rowsBetween(selectedRows(), 0, m_model->rowCount() - 1); });
}

template <typename Choose>
void OrvaneTableView::deleteRows(Choose choose)
{
    showingErrors([&] {
        if (m_model == nullptr) {
            return;
        }
        markRows(choose());
        if (m_model != nullptr) {
            m_model->crunch();
        }
    });
}
