#include "operation/sort_keys.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 64 << 10;

struct Bounds {
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t greatest = 0;
};

// Calls `visit` with the numbers of rows [begin, end), in order.
template <typename Visit>
void for_numbers(const RowColumn &from, std::int64_t begin, std::int64_t end, Visit visit)
{
    const Column &column = *from.column;
    const auto each = [&](auto number_at) {
        if (!from.rows) { // rows are records, all of which are there
            for (std::int64_t row = begin; row < end; ++row)
                visit(row, number_at(static_cast<std::size_t>(row)));
            return;
        }
        for (std::int64_t row = begin; row < end; ++row)
            visit(row, number_at(from.at(static_cast<std::size_t>(row))));
    };
    switch (column.storage()) {
    case ColumnStorage::Integer:
        each([&](std::size_t at) { return ordered_bits(column.integers[at]); });
        break;
    case ColumnStorage::Real:
        each([&](std::size_t at) { return ordered_bits(column.reals[at]); });
        break;
    case ColumnStorage::Text: {
        const auto &ranks = column.texts->ranks();
        each([&](std::size_t at) { return std::uint64_t{ranks[column.codes[at]]}; });
        break;
    }
    }
}

class KeyMaker
{
public:
    KeyMaker(const Operand &operand, const std::vector<int> &fields, bool reverse, Work &work)
        : operand_(operand), fields_(fields), reverse_(reverse), work_(work)
    {
    }

    Result<SortKeys> make()
    {
        keys_.count = operand_.row_count();
        for (const int field : fields_)
            if (Status added = add(operand_.column(field)); !added.ok())
                return added;
        // Where all fields are the same in all rows.
        if (keys_.words.empty())
            add_word();
        if (Status checked = check_order(); !checked.ok())
            return checked;
        return std::move(keys_);
    }

private:
    Status find_bounds(const RowColumn &column, Bounds &bounds)
    {
        if (column.column->storage() == ColumnStorage::Text) {
            bounds = Bounds{0, std::max<std::size_t>(column.column->texts->ranks().size(), 1) - 1};
            return Status();
        }
        std::vector<Bounds> by_thread(thread_limit());
        Status done = work_.for_blocks(
            keys_.count, rows_per_block, 0.05, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                Bounds found = by_thread[thread];
                for_numbers(column, begin, end, [&](std::int64_t, std::uint64_t number) {
                    found.least = std::min(found.least, number);
                    found.greatest = std::max(found.greatest, number);
                });
                by_thread[thread] = found;
                return Status();
            });
        for (const Bounds &found : by_thread) {
            bounds.least = std::min(bounds.least, found.least);
            bounds.greatest = std::max(bounds.greatest, found.greatest);
        }
        return done;
    }

    SortKeys::Word &add_word()
    {
        keys_.words.emplace_back();
        keys_.words.back().keys.assign(static_cast<std::size_t>(keys_.count), 0);
        return keys_.words.back();
    }

    Status add(const RowColumn &column)
    {
        Bounds bounds;
        if (Status found = find_bounds(column, bounds); !found.ok())
            return found;
        if (bounds.least >= bounds.greatest) // no rows, or one value
            return Status();
        const int bits = std::bit_width(bounds.greatest - bounds.least);
        const bool first = keys_.words.empty() || keys_.words.back().bits + bits > 64;
        SortKeys::Word &word = first ? keys_.words.emplace_back() : keys_.words.back();
        if (first)
            word.keys.resize(static_cast<std::size_t>(keys_.count));
        word.bits += bits;
        const std::uint64_t span = bounds.greatest - bounds.least;
        return work_.for_blocks(
            keys_.count, rows_per_block, 0.05, [&](std::int64_t begin, std::int64_t end, unsigned) {
                std::uint64_t *keys = word.keys.data();
                const std::uint64_t least = bounds.least;
                const int shift = first ? 0 : bits;
                for_numbers(column, begin, end, [&](std::int64_t row, std::uint64_t number) {
                    const std::uint64_t part = reverse_ ? span - (number - least) : number - least;
                    keys[row] = first ? part : keys[row] << shift | part;
                });
                return Status();
            });
    }

    Status check_order()
    {
        std::atomic<bool> in_order = true;
        Status done = work_.for_blocks(keys_.count, rows_per_block, 0.02,
                                       [&](std::int64_t begin, std::int64_t end, unsigned) {
                                           if (in_order.load(std::memory_order_relaxed) &&
                                               !is_in_order(std::max<std::int64_t>(begin, 1), end))
                                               in_order.store(false, std::memory_order_relaxed);
                                           return Status();
                                       });
        keys_.in_order = in_order;
        return done;
    }

    // Whether none of the rows [begin, end) comes before the one above it.
    bool is_in_order(std::int64_t begin, std::int64_t end) const
    {
        for (std::int64_t row = begin; row < end; ++row)
            for (const SortKeys::Word &word : keys_.words) {
                const std::uint64_t above = word.keys[static_cast<std::size_t>(row - 1)];
                const std::uint64_t here = word.keys[static_cast<std::size_t>(row)];
                if (above > here)
                    return false;
                if (above < here)
                    break;
            }
        return true;
    }

    const Operand &operand_;
    const std::vector<int> &fields_;
    const bool reverse_;
    Work &work_;
    SortKeys keys_;
};

} // namespace

Result<SortKeys> sort_keys(const Operand &operand, const std::vector<int> &fields, bool reverse, Work &work)
{
    // The places of texts in byte order are worked out here, before several threads read them.
    for (const int field : fields)
        if (const RowColumn column = operand.column(field); column.column->storage() == ColumnStorage::Text)
            column.column->texts->ranks();
    return KeyMaker(operand, fields, reverse, work).make();
}

} // namespace orvane
