// Cells written in any order and read back in row order, in bounded memory: an external merge sort.
//
// Cells gather in a buffer of a few megabytes. A full buffer is sorted by row and column and appended to a
// temporary file as a run; reading merges the runs. A spreadsheet written column by column makes a run for
// every few hundred thousand cells.
#ifndef ORVANE_XLSX_CELL_SPOOL_H
#define ORVANE_XLSX_CELL_SPOOL_H

#include "cell_value.h"

#include <QTemporaryFile>

#include <functional>
#include <vector>

namespace QXlsx {

struct SpooledCell {
    std::uint32_t row = 0; // from 0, as the column
    std::uint16_t column = 0;
    std::uint16_t format = 0;
    CellValue value;
};

// A stretch of the spool file that holds cells in ascending order of place.
struct SpoolRun {
    qint64 begin = 0;
    qint64 end = 0;
};

// Any failure of the file is a std::runtime_error with its reason. A failed append leaves the cells before
// it.
class CellSpool
{
public:
    void append(const SpooledCell &cell);

    // How many were appended.
    std::uint64_t count() const { return m_count; }

    // Calls with each place's last written cell, by rows and by columns within a row.
    void readInRowOrder(const std::function<void(const SpooledCell &)> &take);

private:
    struct Entry {
        std::uint64_t place;
        std::size_t offset; // in m_bytes
    };

    void flush();

    QTemporaryFile m_file;
    std::uint64_t m_count = 0;
    std::vector<SpoolRun> m_runs;
    std::vector<Entry> m_entries;
    std::vector<char> m_bytes;
};

} // namespace QXlsx

#endif
