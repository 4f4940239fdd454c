#include "operation/sort.h"

#include "operation/radix_sort.h"
#include "operation/text_buckets.h"

#include <optional>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 64 << 10;

// The places at which a run of equals begins.
Result<RowNumbers> run_begins(const SortKeys &keys, const RowNumbers &rows, Work &work)
{
    const auto count = static_cast<std::int64_t>(rows.size());
    std::vector<RowNumbers> found(static_cast<std::size_t>((count + rows_per_block - 1) / rows_per_block));
    Status done =
        work.for_blocks(count, rows_per_block, 0.5, [&](std::int64_t begin, std::int64_t end, unsigned) {
            RowNumbers &here = found[static_cast<std::size_t>(begin / rows_per_block)];
            for (auto i = static_cast<std::size_t>(begin); i < static_cast<std::size_t>(end); ++i)
                if (i == 0 || !keys.equal(rows[i - 1], rows[i]))
                    here.push_back(static_cast<RowNumber>(i));
            return Status();
        });
    if (!done.ok())
        return done;
    RowNumbers begins;
    for (const RowNumbers &part : found)
        begins.insert(begins.end(), part.begin(), part.end());
    return begins;
}

// The rows in order of one text field, where that is to be had without keys; else nothing.
Result<std::optional<TextBuckets>> buckets_by(Operand &operand, const std::vector<int> &fields, bool reverse,
                                              Work &work)
{
    if (Status loaded = operand.load(fields, work); !loaded.ok())
        return loaded;
    if (fields.size() != 1 || !has_few_texts(operand.column(fields.front())))
        return std::optional<TextBuckets>();
    auto made = text_buckets(operand.column(fields.front()), operand.row_count(), reverse, work);
    if (!made.ok())
        return made.status();
    return std::optional(std::move(*made));
}

struct Sorted {
    SortKeys keys;
    RowNumbers rows;
};

Result<Sorted> sort_by(Operand &operand, const std::vector<int> &fields, bool reverse, Work &work)
{
    if (Status loaded = operand.load(fields, work); !loaded.ok())
        return loaded;
    const auto bytes_of_row = 8.0 * static_cast<double>(fields.size()) + 28;
    if (Status fits = check_memory(bytes_of_row * static_cast<double>(operand.row_count()),
                                   "the keys of the rows are to be sorted");
        !fits.ok())
        return fits;
    auto keys = sort_keys(operand, fields, reverse, work);
    if (!keys.ok())
        return keys.status();
    auto rows = sorted_rows(*keys, work);
    if (!rows.ok())
        return rows.status();
    return Sorted{std::move(*keys), std::move(*rows)};
}

} // namespace

Result<RowNumbers> sort_rows(Operand &operand, const SortOrder &order, Work &work)
{
    auto buckets = buckets_by(operand, order.fields, order.reverse, work);
    if (!buckets.ok())
        return buckets.status();
    if (*buckets) {
        RowNumbers &rows = (*buckets)->rows;
        if (!order.unique)
            return std::move(rows);
        RowNumbers firsts = std::move((*buckets)->firsts);
        firsts.pop_back();
        for (RowNumber &first : firsts)
            first = rows[first];
        return firsts;
    }
    auto sorted = sort_by(operand, order.fields, order.reverse, work);
    if (!sorted.ok())
        return sorted.status();
    if (!order.unique)
        return std::move(sorted->rows);
    auto begins = run_begins(sorted->keys, sorted->rows, work);
    if (!begins.ok())
        return begins;
    for (RowNumber &begin : *begins)
        begin = sorted->rows[begin];
    return begins;
}

Result<Groups> group_rows(Operand &operand, const std::vector<int> &fields, Work &work)
{
    auto buckets = buckets_by(operand, fields, false, work);
    if (!buckets.ok())
        return buckets.status();
    if (*buckets) {
        TextBuckets &made = **buckets;
        return Groups{made.in_order, made.in_order ? RowNumbers() : std::move(made.rows),
                      std::move(made.firsts)};
    }
    auto sorted = sort_by(operand, fields, false, work);
    if (!sorted.ok())
        return sorted.status();
    auto firsts = run_begins(sorted->keys, sorted->rows, work);
    if (!firsts.ok())
        return firsts.status();
    Groups groups;
    groups.in_order = sorted->keys.in_order;
    groups.firsts = std::move(*firsts);
    groups.firsts.push_back(static_cast<RowNumber>(sorted->rows.size()));
    if (!groups.in_order)
        groups.rows = std::move(sorted->rows);
    return groups;
}

} // namespace orvane
