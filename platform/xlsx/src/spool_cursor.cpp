#include "spool_cursor.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace QXlsx {

SpoolCursor::SpoolCursor(int file, SpoolRun run, std::size_t bufferSize)
    : m_file(file), m_rest(run), m_bufferSize(bufferSize)
{
}

bool SpoolCursor::next()
{
    if (m_at == m_buffer.size() && m_rest.begin == m_rest.end) {
        return false;
    }
    std::memcpy(&m_head, take(sizeof m_head), sizeof m_head);
    m_payload = take(m_head.length);
    return true;
}

SpooledCell SpoolCursor::cell() const
{
    SpooledCell cell{
        std::uint32_t(m_head.place >> 16), std::uint16_t(m_head.place & 0xffff), m_head.format, {}};
    cell.value.kind = m_head.kind;
    if (m_head.kind == CellKind::Text) {
        cell.value.text = QByteArray(m_payload, int(m_head.length));
    } else if (m_head.length == sizeof(double)) {
        std::memcpy(&cell.value.number, m_payload, sizeof(double));
    }
    return cell;
}

// The next bytes, which the buffer then holds whole.
const char *SpoolCursor::take(std::size_t size)
{
    if (m_buffer.size() - m_at < size) {
        m_buffer.erase(m_buffer.begin(), m_buffer.begin() + std::ptrdiff_t(m_at));
        m_at = 0;
        std::size_t filled = m_buffer.size();
        const std::size_t rest = std::size_t(m_rest.end - m_rest.begin);
        m_buffer.resize(filled + std::min(rest, std::max(size, m_bufferSize) - filled));
        while (filled < m_buffer.size()) {
            const ssize_t got =
                ::pread(m_file, m_buffer.data() + filled, m_buffer.size() - filled, m_rest.begin);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                throw std::runtime_error(std::string("cannot read the spool file: ") +
                                         (got < 0 ? std::strerror(errno) : "it is shorter than was written"));
            }
            filled += std::size_t(got);
            m_rest.begin += got;
        }
        if (m_buffer.size() < size) {
            throw std::runtime_error("cannot read the spool file: a cell in it is cut short");
        }
    }
    const char *bytes = m_buffer.data() + m_at;
    m_at += size;
    return bytes;
}

} // namespace QXlsx
