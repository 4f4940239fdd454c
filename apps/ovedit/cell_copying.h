// Selected cells as tab-separated text for the clipboard.
#ifndef OVEDIT_CELL_COPYING_H
#define OVEDIT_CELL_COPYING_H

#include <QString>

class OrvaneTableView;
class QWidget;

// Copies the selected cells of the table: rows and columns in the order shown, columns that are not shown
// left out, each cell as it is shown, and before them the names of the columns where `withHeader`. Asks first
// where that takes much memory. Throws std::runtime_error with a sentence for the user where the selection is
// no grid, too large, or where the table changes meanwhile; the clipboard is left as it was then, and when
// the user cancels.
void copySelectedCells(OrvaneTableView &view, bool withHeader, QWidget *window);

#endif
