// Reads the events of a table in slices, so that a window stays alive meanwhile.
#pragma once

#include <chrono>

#include "origin_table.h"

class CatalogueReader
{
public:
    // The table must outlive the reader.
    explicit CatalogueReader(const OriginTable &table);

    // Reads on for about that long; true when all is read.
    bool readFor(std::chrono::steady_clock::duration time);

    double progress() const; // 0 to 1

    // What the table was when reading began.
    const OriginTable::State &state() const { return m_state; }

    EventCatalogue take() { return std::move(m_catalogue); }

private:
    const OriginTable &m_table;
    OriginTable::State m_state;
    EventCatalogue m_catalogue;
    std::int64_t m_next = 0;
};
