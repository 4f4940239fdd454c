// The form of a cell in the spool file, and a reader of a run of such cells.
#ifndef ORVANE_XLSX_SPOOL_CURSOR_H
#define ORVANE_XLSX_SPOOL_CURSOR_H

#include "cell_spool.h"

#include <cstring>

namespace QXlsx {

// Followed by the text's bytes (kind Text), by a double (numbers and dates), or by nothing (Blank).
struct SpoolHead {
    std::uint64_t place;  // row * 65536 + column: its order is the order of the sheet
    std::uint32_t length; // of what follows, in bytes
    std::uint16_t format;
    CellKind kind;
    std::uint8_t unused;
};
static_assert(sizeof(SpoolHead) == 16);

inline std::uint64_t placeOf(const SpooledCell &cell)
{
    return std::uint64_t(cell.row) << 16 | cell.column;
}

// Reads one run through a buffer of its own; many cursors share one file.
class SpoolCursor
{
public:
    SpoolCursor(int file, SpoolRun run, std::size_t bufferSize);

    // To the next cell, at first to the first one. False at the end; throws std::runtime_error.
    bool next();

    std::uint64_t place() const { return m_head.place; }
    SpooledCell cell() const;

private:
    const char *take(std::size_t size);

    int m_file;
    SpoolRun m_rest; // not yet in the buffer
    std::size_t m_bufferSize;
    std::vector<char> m_buffer;
    std::size_t m_at = 0; // in the buffer
    SpoolHead m_head{};
    const char *m_payload = nullptr; // in the buffer, till the next cell
};

} // namespace QXlsx

#endif
