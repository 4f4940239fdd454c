// Rows of views that are read when they are first asked for: those of saved views.
#pragma once

#include "base/status.h"

#include <cstdint>

namespace orvane {

class RecordTable;

class DelayedRows
{
public:
    virtual ~DelayedRows() = default;

    // Gives their rows to all views that wait for these, or refuses them all.
    virtual void deliver() = 0;
    // As `deliver`, while records of a table are numbered anew: it had so many before, of a generation that
    // is the last one no more.
    virtual void deliver_before_renumbering(const RecordTable &table, std::uint64_t generation,
                                            std::int64_t records) = 0;
};

} // namespace orvane
