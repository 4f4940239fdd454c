#include "cell_spool.h"

#include "spool_cursor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <queue>
#include <stdexcept>

namespace QXlsx {

namespace {

constexpr std::size_t spoolBufferSize = 4 << 20;
// All cursors together, shared out among the runs; within reason for each.
constexpr std::size_t readBuffers = 8 << 20;
constexpr std::size_t leastReadBuffer = 4 << 10;
constexpr std::size_t mostReadBuffer = 256 << 10;

// The toolkit's file does not always know why it failed; the system does.
[[noreturn]] void failed(const char *what, const QTemporaryFile &file)
{
    const std::string reason = errno != 0 ? std::strerror(errno) : file.errorString().toStdString();
    throw std::runtime_error(std::string(what) + ": " + reason);
}

// The earliest place first, and of one place the cell written last.
struct Later {
    const std::vector<SpoolCursor> &cursors;
    bool operator()(std::size_t left, std::size_t right) const
    {
        const std::uint64_t leftPlace = cursors[left].place();
        const std::uint64_t rightPlace = cursors[right].place();
        return leftPlace != rightPlace ? leftPlace > rightPlace : left < right;
    }
};

} // namespace

void CellSpool::append(const SpooledCell &cell)
{
    if (m_bytes.size() >= spoolBufferSize) {
        flush();
    }
    const CellValue &value = cell.value;
    const bool isText = value.kind == CellKind::Text;
    const char *payload = isText ? value.text.constData() : reinterpret_cast<const char *>(&value.number);
    const std::size_t length =
        isText ? std::size_t(value.text.size()) : (value.kind == CellKind::Blank ? 0 : sizeof value.number);
    const SpoolHead head{placeOf(cell), std::uint32_t(length), cell.format, value.kind, 0};
    const char *headBytes = reinterpret_cast<const char *>(&head);
    const std::size_t offset = m_bytes.size();
    m_bytes.insert(m_bytes.end(), headBytes, headBytes + sizeof head);
    m_bytes.insert(m_bytes.end(), payload, payload + length);
    m_entries.push_back({head.place, offset});
    ++m_count;
}

// Of several cells for one place in the buffer the last goes to the run, so that a run has none twice.
void CellSpool::flush()
{
    if (m_entries.empty()) {
        return;
    }
    errno = 0;
    if (!m_file.isOpen() && !m_file.open()) {
        failed("cannot make the spool file", m_file);
    }
    const auto earlier = [](const Entry &left, const Entry &right) { return left.place < right.place; };
    std::stable_sort(m_entries.begin(), m_entries.end(), earlier);
    const qint64 begin = m_runs.empty() ? 0 : m_runs.back().end;
    bool written = m_file.seek(begin);
    for (std::size_t at = 0; written && at < m_entries.size(); ++at) {
        if (at + 1 < m_entries.size() && m_entries[at + 1].place == m_entries[at].place) {
            continue;
        }
        SpoolHead head;
        const char *bytes = m_bytes.data() + m_entries[at].offset;
        std::memcpy(&head, bytes, sizeof head);
        const qint64 size = qint64(sizeof head + head.length);
        written = m_file.write(bytes, size) == size;
    }
    if (!written || !m_file.flush()) {
        failed("cannot write the spool file", m_file);
    }
    m_runs.push_back({begin, m_file.pos()});
    m_entries.clear();
    m_bytes.clear();
}

void CellSpool::readInRowOrder(const std::function<void(const SpooledCell &)> &take)
{
    flush();
    const std::size_t share = readBuffers / std::max<std::size_t>(m_runs.size(), 1);
    std::vector<SpoolCursor> cursors;
    for (const SpoolRun &run : m_runs) {
        cursors.emplace_back(m_file.handle(), run, std::clamp(share, leastReadBuffer, mostReadBuffer));
    }
    std::priority_queue<std::size_t, std::vector<std::size_t>, Later> order(Later{cursors});
    for (std::size_t run = 0; run < cursors.size(); ++run) {
        if (cursors[run].next()) {
            order.push(run);
        }
    }
    bool any = false;
    std::uint64_t taken = 0;
    while (!order.empty()) {
        const std::size_t run = order.top();
        order.pop();
        if (!any || cursors[run].place() != taken) {
            any = true;
            taken = cursors[run].place();
            take(cursors[run].cell());
        }
        if (cursors[run].next()) {
            order.push(run);
        }
    }
}

} // namespace QXlsx
