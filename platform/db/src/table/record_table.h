// A table that has records of its own, by number: what views are made of.
#pragma once

#include "column/column.h"
#include "storage/block_cache.h"
#include "table/table.h"
#include "work/work.h"

#include <span>
#include <vector>

namespace orvane {

// A table's records at one moment, for an operation.
struct Snapshot {
    std::int64_t records = 0;
    FileVersion version = 0;
    Status refusal; // why a table that has a file looks as if it had no records
};

class RecordTable : public Table
{
public:
    // Looks at the file anew.
    virtual Snapshot snapshot() = 0;
    // Decoded fields of all records, in the order asked for. When the table is no longer as it was at the
    // snapshot it is a failure, and a change that the work met.
    virtual Result<std::vector<ColumnPtr>> columns(std::span<const int> fields, const Snapshot &as_of,
                                                   Work &work) = 0;
};

} // namespace orvane
