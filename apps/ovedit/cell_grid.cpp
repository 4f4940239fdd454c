#include "cell_grid.h"

#include <algorithm>
#include <map>

#include <QHeaderView>
#include <QItemSelectionModel>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

namespace {

using Places = std::vector<int>; // of columns in the order shown; how many ranges cover each

// What begins and ends at a row: ranges of a selection may overlap, and divide rows in any way.
struct Border {
    std::vector<const QItemSelectionRange *> begins;
    std::vector<const QItemSelectionRange *> ends;
};

std::map<int, Border> bordersOf(const QItemSelection &selection)
{
    std::map<int, Border> borders;
    for (const QItemSelectionRange &range : selection) {
        borders[range.top()].begins.push_back(&range);
        borders[range.bottom() + 1].ends.push_back(&range);
    }
    return borders;
}

void cover(Places &covered, const QVector<int> &shown, const QItemSelectionRange &range, int by)
{
    for (int place = 0; place < shown.size(); ++place) {
        if (shown[place] >= range.left() && shown[place] <= range.right()) {
            covered[static_cast<std::size_t>(place)] += by;
        }
    }
}

QVector<int> coveredColumns(const Places &covered, const QVector<int> &shown)
{
    QVector<int> columns;
    for (int place = 0; place < shown.size(); ++place) {
        if (covered[static_cast<std::size_t>(place)] > 0) {
            columns.append(shown[place]);
        }
    }
    return columns;
}

} // namespace

qint64 CellGrid::rowCount() const
{
    qint64 count = 0;
    for (const RowRun &run : rows) {
        count += run.end - run.first;
    }
    return count;
}

QVector<int> shownColumns(const OrvaneTableView &view)
{
    QVector<int> columns;
    const QHeaderView &header = *view.horizontalHeader();
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        if (!header.isSectionHidden(column)) {
            columns.append(column);
        }
    }
    return columns;
}

std::optional<CellGrid> selectedGrid(const OrvaneTableView &view)
{
    CellGrid grid;
    if (view.model() == nullptr || view.selectionModel() == nullptr) {
        return grid;
    }
    const QItemSelection selection = view.selectionModel()->selection();
    const QVector<int> shown = shownColumns(view);
    Places covered(static_cast<std::size_t>(shown.size()), 0);
    int from = 0;
    for (const auto &[row, border] : bordersOf(selection)) {
        const QVector<int> columns = coveredColumns(covered, shown);
        if (!columns.isEmpty()) {
            if (!grid.columns.isEmpty() && grid.columns != columns) {
                return std::nullopt;
            }
            grid.columns = columns;
            if (!grid.rows.empty() && grid.rows.back().end == from) {
                grid.rows.back().end = row;
            } else {
                grid.rows.push_back({from, row});
            }
        }
        for (const QItemSelectionRange *range : border.begins) {
            cover(covered, shown, *range, 1);
        }
        for (const QItemSelectionRange *range : border.ends) {
            cover(covered, shown, *range, -1);
        }
        from = row;
    }
    return grid;
}
