#include "work/snapshots.h"

#include "table/record_table.h"

#include <algorithm>

namespace orvane {

Snapshot Snapshots::of(const std::shared_ptr<RecordTable> &table)
{
    const auto known =
        std::find_if(taken_.begin(), taken_.end(), [&](const auto &taken) { return taken.first == table; });
    if (known != taken_.end())
        return known->second;
    Snapshot now = table->snapshot();
    taken_.emplace_back(table, now);
    return now;
}

} // namespace orvane
