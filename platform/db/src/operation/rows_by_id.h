// The rows of one side of a join by the ids of equal_ids.h.
#pragma once

#include "operation/operand.h"

#include <cstdint>
#include <vector>

namespace orvane {

// Rows with null_row for an id are in none of these.

struct RowBuckets {
    RowNumbers begins; // per id, and behind the last one the end
    RowNumbers rows;   // ascending within each bucket

    std::size_t size(RowNumber id) const { return begins[id + 1] - begins[id]; }
};
Result<RowBuckets> row_buckets(const RowNumbers &ids, std::uint32_t domain, Work &work);

// Per id its row, or null_row where there is none; empty where an id has several.
Result<RowNumbers> only_rows(const RowNumbers &ids, std::uint32_t domain, Work &work);

// Which ids there are.
class IdSet
{
public:
    bool has(RowNumber id) const { return id != null_row && (bits_[id / 64] >> (id % 64) & 1) != 0; }

    friend Result<IdSet> id_set(const RowNumbers &ids, std::uint32_t domain, Work &work);

private:
    Buffer<std::uint64_t> bits_;
};
Result<IdSet> id_set(const RowNumbers &ids, std::uint32_t domain, Work &work);

} // namespace orvane
