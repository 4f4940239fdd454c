// The selected cells of a table view as a grid of rows and columns.
#ifndef OVEDIT_CELL_GRID_H
#define OVEDIT_CELL_GRID_H

#include <optional>
#include <vector>

#include <QVector>

class OrvaneTableView;

struct RowRun {
    int first;
    int end; // behind the last
};

// Each of its rows has a cell in each of its columns.
struct CellGrid {
    std::vector<RowRun> rows; // from top to bottom
    QVector<int> columns;     // of the model, from left to right as they stand on the screen

    qint64 rowCount() const;
    qint64 cellCount() const { return rowCount() * columns.size(); }
    bool isEmpty() const { return rows.empty() || columns.isEmpty(); }
};

// The columns that are shown, from left to right as they stand on the screen.
QVector<int> shownColumns(const OrvaneTableView &view);

// The cells that are selected and shown. None where they make up no grid, as a cell here and another one
// there in another row and column; an empty one where no cell is selected.
std::optional<CellGrid> selectedGrid(const OrvaneTableView &view);

#endif
