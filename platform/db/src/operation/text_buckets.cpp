#include "operation/text_buckets.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace orvane {

namespace {

constexpr std::size_t most_texts = 4096; // so many places are written to at a time
constexpr std::int64_t part_rows = 256 << 10;

} // namespace

bool has_few_texts(const RowColumn &column)
{
    return column.column->storage() == ColumnStorage::Text && column.column->texts->size() <= most_texts;
}

Result<TextBuckets> text_buckets(const RowColumn &column, std::int64_t row_count, bool reverse, Work &work)
{
    // By code the place of the text among all, in the order that is asked for.
    std::vector<std::uint32_t> ranks = column.column->texts->ranks();
    const std::size_t texts = ranks.size();
    if (reverse)
        for (std::uint32_t &rank : ranks)
            rank = static_cast<std::uint32_t>(texts) - 1 - rank;
    const std::uint32_t *const codes = column.column->codes.data();
    const auto rank_of = [&](std::int64_t row) {
        return ranks[codes[column.rows ? column.at(static_cast<std::size_t>(row))
                                       : static_cast<std::size_t>(row)]];
    };

    TextBuckets made;
    const auto parts = static_cast<std::size_t>((row_count + part_rows - 1) / part_rows);
    std::vector<std::uint32_t> places(parts * texts, 0);
    std::atomic<bool> in_order = true;
    Status done =
        work.for_blocks(row_count, part_rows, 0.3, [&](std::int64_t begin, std::int64_t end, unsigned) {
            std::uint32_t *const counts = places.data() + static_cast<std::size_t>(begin / part_rows) * texts;
            std::uint32_t above = begin > 0 ? rank_of(begin - 1) : 0;
            bool rising = true;
            for (std::int64_t row = begin; row < end; ++row) {
                const std::uint32_t rank = rank_of(row);
                ++counts[rank];
                rising &= rank >= above;
                above = rank;
            }
            if (!rising)
                in_order.store(false, std::memory_order_relaxed);
            return Status();
        });
    if (!done.ok())
        return done;
    made.in_order = in_order;
    RowNumber next = 0;
    for (std::size_t rank = 0; rank < texts; ++rank) {
        const RowNumber first = next;
        for (std::size_t part = 0; part < parts; ++part)
            next += std::exchange(places[part * texts + rank], next);
        if (next > first)
            made.firsts.push_back(first);
    }
    made.firsts.push_back(next);
    made.rows.resize(static_cast<std::size_t>(row_count));
    done = work.for_blocks(row_count, part_rows, 0.6, [&](std::int64_t begin, std::int64_t end, unsigned) {
        std::uint32_t *const place = places.data() + static_cast<std::size_t>(begin / part_rows) * texts;
        for (std::int64_t row = begin; row < end; ++row)
            made.rows[place[rank_of(row)]++] = static_cast<RowNumber>(row);
        return Status();
    });
    if (!done.ok())
        return done;
    return made;
}

} // namespace orvane
