// The writing of spooled cells to an .xlsx file, row by row.
#ifndef ORVANE_XLSX_WORKBOOK_FILE_H
#define ORVANE_XLSX_WORKBOOK_FILE_H

#include "cell_spool.h"

#include <QByteArray>

#include <map>
#include <vector>

#include <xlsxformat.h>

namespace QXlsx {

constexpr int lastRow = 1048576;
constexpr int lastColumn = 16384;
constexpr int longestNumberFormat = 127; // bytes: the writing library cuts longer ones silently

// What stands in a workbook of one sheet. A spooled cell names its format by its index in `formats`.
struct SheetContents {
    CellSpool &cells;
    const std::vector<Format> &formats;
    const std::map<int, double> &columnWidths; // by 1-based column, in characters
};

class SavingWatch;

// Writes the workbook to the file. Throws std::runtime_error with the reason; the file's state is then
// undefined.
void writeWorkbook(const QByteArray &path, const SheetContents &contents, SavingWatch &watch);

} // namespace QXlsx

#endif
