// The tables as one operation sees them.
#pragma once

#include "base/status.h"
#include "storage/block_cache.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

class RecordTable;

// A table's records at one moment, for an operation.
struct Snapshot {
    std::int64_t records = 0;
    FileVersion version = 0;
    Status refusal = {};          // why a table that has a file looks as if it had no records
    std::uint64_t generation = 0; // for which record numbers hold
};

// What an operation saw when it looked at its tables. It looks at each once, however many of its operands
// have the table, and however deep: to look again at a file that changed a moment ago is to see another
// version of it, whether or not it is one, and what was read of the one before would be worth nothing.
class Snapshots
{
public:
    // The table as it was when this was asked first.
    Snapshot of(const std::shared_ptr<RecordTable> &table);

    // For an operation that is begun anew.
    void forget() { taken_.clear(); }

private:
    std::vector<std::pair<std::shared_ptr<RecordTable>, Snapshot>> taken_;
};

} // namespace orvane
