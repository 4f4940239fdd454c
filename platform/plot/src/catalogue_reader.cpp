#include "catalogue_reader.h"

#include <algorithm>

#include "error_log.h"

CatalogueReader::CatalogueReader(const OriginTable &table) : m_table(table), m_state(table.state())
{
    m_catalogue.error = m_state.error;
    m_catalogue.events.reserve(static_cast<std::size_t>(std::max<std::int64_t>(m_state.records, 0)));
}

bool CatalogueReader::readFor(std::chrono::steady_clock::duration time)
{
    constexpr std::int64_t batch = 256; // records between two looks at the clock
    const LoggedErrors errors;
    const auto end = std::chrono::steady_clock::now() + time;
    while (m_next < m_state.records) {
        const std::int64_t stop = std::min(m_next + batch, m_state.records);
        for (; m_next < stop; ++m_next)
            if (!m_table.read(m_next, m_catalogue)) { // cut short meanwhile, of which the next look tells
                m_next = m_state.records;
                return true;
            }
        if (std::chrono::steady_clock::now() >= end)
            break;
    }
    return m_next >= m_state.records;
}

double CatalogueReader::progress() const
{
    return m_state.records > 0 ? static_cast<double>(m_next) / static_cast<double>(m_state.records) : 1;
}

EventCatalogue readEvents(const QString &path)
{
    const OriginTable table(path);
    CatalogueReader reader(table);
    while (!reader.readFor(std::chrono::seconds(1))) {
    }
    return reader.take();
}
