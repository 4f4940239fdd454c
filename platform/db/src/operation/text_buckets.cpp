#include "operation/text_buckets.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace orvane {

namespace {

constexpr std::size_t most_texts = 4096; // so many places are written to at a time
constexpr std::int64_t part_rows = 256 << 10;

// By place in the order that is asked for the code of the text there, and by code its place.
struct TextOrder {
    std::vector<std::uint32_t> codes;
    std::vector<std::uint32_t> places;

    TextOrder(const std::vector<std::uint32_t> &ranks, bool reverse) : codes(ranks.size()), places(ranks)
    {
        for (std::uint32_t code = 0; code < places.size(); ++code) {
            if (reverse)
                places[code] = static_cast<std::uint32_t>(places.size()) - 1 - places[code];
            codes[places[code]] = code;
        }
    }
};

// Rows are counted and put in place by their codes as they are: what the order of the texts is does not
// matter before the numbers of all are known.
template <typename CodeOf>
Result<TextBuckets> buckets(CodeOf code_of, const TextOrder &order, std::int64_t row_count, Work &work)
{
    TextBuckets made;
    const std::size_t texts = order.codes.size();
    const auto parts = static_cast<std::size_t>((row_count + part_rows - 1) / part_rows);
    std::vector<std::uint32_t> places(parts * texts, 0);
    std::atomic<bool> in_order = true;
    const auto in_order_from = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t row = std::max<std::int64_t>(begin, 1); row < end; ++row)
            if (order.places[code_of(row)] < order.places[code_of(row - 1)])
                return false;
        return true;
    };
    Status done =
        work.for_blocks(row_count, part_rows, 0.3, [&](std::int64_t begin, std::int64_t end, unsigned) {
            std::uint32_t *const counts = places.data() + static_cast<std::size_t>(begin / part_rows) * texts;
            for (std::int64_t row = begin; row < end; ++row)
                ++counts[code_of(row)];
            if (in_order.load(std::memory_order_relaxed) && !in_order_from(begin, end))
                in_order.store(false, std::memory_order_relaxed);
            return Status();
        });
    if (!done.ok())
        return done;
    made.in_order = in_order;
    RowNumber next = 0;
    for (const std::uint32_t code : order.codes) {
        const RowNumber first = next;
        for (std::size_t part = 0; part < parts; ++part)
            next += std::exchange(places[part * texts + code], next);
        if (next > first)
            made.firsts.push_back(first);
    }
    made.firsts.push_back(next);
    made.rows.resize(static_cast<std::size_t>(row_count));
    done = work.for_blocks(row_count, part_rows, 0.6, [&](std::int64_t begin, std::int64_t end, unsigned) {
        std::uint32_t *const place = places.data() + static_cast<std::size_t>(begin / part_rows) * texts;
        RowNumber *const rows = made.rows.data();
        for (std::int64_t row = begin; row < end; ++row)
            rows[place[code_of(row)]++] = static_cast<RowNumber>(row);
        return Status();
    });
    if (!done.ok())
        return done;
    return made;
}

} // namespace

bool has_few_texts(const RowColumn &column)
{
    return column.column->storage() == ColumnStorage::Text && column.column->texts->size() <= most_texts;
}

Result<TextBuckets> text_buckets(const RowColumn &column, std::int64_t row_count, bool reverse, Work &work)
{
    const TextOrder order(column.column->texts->ranks(), reverse);
    const std::uint32_t *const codes = column.column->codes.data();
    if (!column.rows)
        return buckets([codes](std::int64_t row) { return codes[row]; }, order, row_count, work);
    return buckets([&](std::int64_t row) { return codes[column.at(static_cast<std::size_t>(row))]; }, order,
                   row_count, work);
}

} // namespace orvane
