#include "operation/equal_ids.h"

#include "expression/calendar.h"
#include "operation/key_ids.h"
#include "operation/sort_keys.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 64 << 10;
// Numbers that lie in so many times the rows, or in so few at all, are ids as they are, less the least of
// them.
constexpr std::uint64_t direct_factor = 4;
constexpr std::uint64_t direct_least = 1 << 16;

bool fits_directly(std::uint64_t span, std::int64_t rows)
{
    return span < std::max(direct_factor * static_cast<std::uint64_t>(rows), direct_least) &&
           span < std::numeric_limits<std::uint32_t>::max();
}

// ---- Numbers -------------------------------------------------------------------------------------

// How the values of both sides become numbers that can be compared.
enum class Scale { Integers, Reals, IntegersAndReals, Days };

Scale scale_of(const Column &left, const Column &right)
{
    const auto is = [&](FieldType a, FieldType b) {
        return (left.type == a && right.type == b) || (left.type == b && right.type == a);
    };
    if (is(FieldType::Yearday, FieldType::Time))
        return Scale::Days;
    if (left.storage() != right.storage())
        return Scale::IntegersAndReals;
    return left.storage() == ColumnStorage::Integer ? Scale::Integers : Scale::Reals;
}

// The whole number that a real one is; none where it isn't one.
std::optional<std::int64_t> whole(double value)
{
    constexpr double limit = 9223372036854775808.0;
    if (!(value >= -limit && value < limit) || value != std::floor(value))
        return std::nullopt;
    return static_cast<std::int64_t>(value);
}

// The number of a value, ordered as sort_keys.h says; none where it can't be equal to one of the other side.
std::optional<std::uint64_t> number_of(const SideValues &values, std::size_t row, Scale scale,
                                       bool nulls_join)
{
    if (values.is_missing(row))
        return std::nullopt;
    const Column &column = *values.column.column;
    const std::size_t at = values.column.at(row);
    if (column.storage() == ColumnStorage::Integer) {
        const std::int64_t value = column.integers[at];
        return !nulls_join && value == column.null_integer ? std::nullopt
                                                           : std::optional(ordered_bits(value));
    }
    const double value = column.reals[at];
    if ((!nulls_join && value == column.null_real) || std::isnan(value))
        return std::nullopt;
    if (scale == Scale::Reals)
        return ordered_bits(value);
    const auto integer = scale == Scale::Days ? expr::yearday_of(value) : whole(value);
    return integer ? std::optional(ordered_bits(*integer)) : std::nullopt;
}

// Ids of one pair of values.
class ValueIds
{
public:
    ValueIds(std::int64_t left_count, std::int64_t right_count, const EqualValues &values, Work &work)
        : left_count_(left_count), right_count_(right_count), values_(values), work_(work)
    {
        ids_.left.resize(static_cast<std::size_t>(left_count));
        ids_.right.resize(static_cast<std::size_t>(right_count));
    }

    Result<EqualIds> make()
    {
        const bool text = values_.left.column.column->storage() == ColumnStorage::Text;
        Status done = text ? of_texts() : of_numbers();
        if (!done.ok())
            return done;
        return std::move(ids_);
    }

private:
    // The right side's codes are the ids; those of the left are looked up once per text, not per row.
    Status of_texts()
    {
        const Column &left = *values_.left.column.column;
        const Column &right = *values_.right.column.column;
        ids_.domain = static_cast<std::uint32_t>(right.texts->size());
        std::vector<RowNumber> of_left(left.texts->size());
        for (std::uint32_t code = 0; code < of_left.size(); ++code)
            of_left[code] = right.texts->find(left.texts->text(code));
        std::vector<RowNumber> of_right(ids_.domain);
        for (std::uint32_t code = 0; code < ids_.domain; ++code)
            of_right[code] = code;
        if (!values_.nulls_join) {
            of_left[left.null_code] = null_row;
            of_right[right.null_code] = null_row;
        }
        Status done = fill_by_codes(values_.left, of_left, ids_.left);
        return done.ok() ? fill_by_codes(values_.right, of_right, ids_.right) : done;
    }

    Status fill_by_codes(const SideValues &values, const std::vector<RowNumber> &of_code, RowNumbers &out)
    {
        const RowNumber *const ids = of_code.data();
        const std::uint32_t *const codes = values.column.column->codes.data();
        if (!values.missing && !values.column.rows)
            return fill(out, [=](std::size_t row) { return ids[codes[row]]; });
        return fill(out, [&, ids, codes](std::size_t row) {
            return values.is_missing(row) ? null_row : ids[codes[values.column.at(row)]];
        });
    }

    // Numbers that are compared as they are stored. False where they lie too far apart to be ids.
    Result<bool> of_integers()
    {
        std::int64_t least = 0;
        std::uint64_t span = 0;
        if (Status found = find_span(least, span); !found.ok())
            return found;
        if (!fits_directly(span, left_count_ + right_count_))
            return false;
        ids_.domain = static_cast<std::uint32_t>(span) + 1;
        Status done = fill_integers(values_.left.column, least, span, ids_.left);
        if (done.ok())
            done = fill_integers(values_.right.column, least, span, ids_.right);
        return done.ok() ? Result<bool>(true) : done;
    }

    // Of the right side's integers; of none one that nothing on the left is in.
    Status find_span(std::int64_t &least, std::uint64_t &span)
    {
        struct Span {
            std::int64_t least = std::numeric_limits<std::int64_t>::max();
            std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
        };
        std::vector<Span> spans(thread_limit());
        const RowColumn &column = values_.right.column;
        const bool nulls_join = values_.nulls_join;
        const std::int64_t null = column.column->null_integer;
        Status done = work_.for_blocks(
            right_count_, rows_per_block, 0.1, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                Span here = spans[thread];
                for_integers(column, begin, end, [&](std::size_t, std::int64_t value) {
                    if (value == null && !nulls_join)
                        return;
                    here.least = std::min(here.least, value);
                    here.greatest = std::max(here.greatest, value);
                });
                spans[thread] = here;
                return Status();
            });
        Span all;
        for (const Span &found : spans) {
            all.least = std::min(all.least, found.least);
            all.greatest = std::max(all.greatest, found.greatest);
        }
        const bool any = all.least <= all.greatest;
        least = any ? all.least : 0;
        span = any ? static_cast<std::uint64_t>(all.greatest) - static_cast<std::uint64_t>(all.least) : 0;
        any_integers_ = any;
        return done;
    }

    Status fill_integers(const RowColumn &column, std::int64_t least, std::uint64_t span, RowNumbers &out)
    {
        const std::int64_t null = column.column->null_integer;
        const bool no_nulls = !values_.nulls_join;
        return work_.for_blocks(
            static_cast<std::int64_t>(out.size()), rows_per_block, 0.2,
            [&](std::int64_t begin, std::int64_t end, unsigned) {
                RowNumber *const ids = out.data();
                for_integers(column, begin, end, [&](std::size_t row, std::int64_t value) {
                    const std::uint64_t id =
                        static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(least);
                    const bool none = id > span || (value == null && no_nulls) || !any_integers_;
                    ids[row] = none ? null_row : static_cast<RowNumber>(id);
                });
                return Status();
            });
    }

    template <typename Visit>
    static void for_integers(const RowColumn &column, std::int64_t begin, std::int64_t end, Visit visit)
    {
        const std::int64_t *const integers = column.column->integers.data();
        const auto last = static_cast<std::size_t>(end);
        if (!column.rows)
            for (auto row = static_cast<std::size_t>(begin); row < last; ++row)
                visit(row, integers[row]);
        else
            for (auto row = static_cast<std::size_t>(begin); row < last; ++row)
                visit(row, integers[column.at(row)]);
    }

    Status of_numbers()
    {
        if (values_.left.column.column->storage() == ColumnStorage::Integer &&
            values_.right.column.column->storage() == ColumnStorage::Integer && !values_.left.missing &&
            !values_.right.missing) {
            const auto made = of_integers();
            if (!made.ok() || *made)
                return made.status();
        }
        const Scale scale = scale_of(*values_.left.column.column, *values_.right.column.column);
        const auto number_of_left = [&](std::size_t row) {
            return number_of(values_.left, row, scale, values_.nulls_join);
        };
        const auto number_of_right = [&](std::size_t row) {
            return number_of(values_.right, row, scale, values_.nulls_join);
        };
        std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
        std::uint64_t greatest = 0;
        for (std::int64_t row = 0; row < right_count_; ++row) {
            if (row % rows_per_block == 0)
                if (Status told = work_.poll(); !told.ok())
                    return told;
            if (const auto number = number_of_right(static_cast<std::size_t>(row))) {
                least = std::min(least, *number);
                greatest = std::max(greatest, *number);
            }
        }
        if (least > greatest || fits_directly(greatest - least, left_count_ + right_count_))
            return directly(number_of_left, number_of_right, least, greatest);
        return by_hash(number_of_left, number_of_right);
    }

    template <typename OfLeft, typename OfRight>
    Status directly(OfLeft of_left, OfRight of_right, std::uint64_t least, std::uint64_t greatest)
    {
        ids_.domain = least > greatest ? 1 : static_cast<std::uint32_t>(greatest - least) + 1;
        const auto id_of = [&](const std::optional<std::uint64_t> &number) {
            return number && *number >= least && *number <= greatest ? static_cast<RowNumber>(*number - least)
                                                                     : null_row;
        };
        Status done = fill(ids_.left, [&](std::size_t row) { return id_of(of_left(row)); });
        return done.ok() ? fill(ids_.right, [&](std::size_t row) { return id_of(of_right(row)); }) : done;
    }

    template <typename OfLeft, typename OfRight>
    Status by_hash(OfLeft of_left, OfRight of_right)
    {
        KeyIds ids(std::min<std::size_t>(ids_.right.size(), 1 << 16));
        for (std::size_t row = 0; row < ids_.right.size(); ++row) {
            if (row % rows_per_block == 0)
                if (Status told = work_.poll(); !told.ok())
                    return told;
            const auto number = of_right(row);
            ids_.right[row] = number ? ids.id_of(*number) : null_row;
        }
        ids_.domain = ids.count();
        static_assert(KeyIds::none == null_row);
        return fill(ids_.left, [&](std::size_t row) {
            const auto number = of_left(row);
            return number ? ids.find(*number) : null_row;
        });
    }

    template <typename OfRow>
    Status fill(RowNumbers &out, OfRow of_row)
    {
        return work_.for_blocks(static_cast<std::int64_t>(out.size()), rows_per_block, 0.2,
                                [&](std::int64_t begin, std::int64_t end, unsigned) {
                                    for (auto row = static_cast<std::size_t>(begin);
                                         row < static_cast<std::size_t>(end); ++row)
                                        out[row] = of_row(row);
                                    return Status();
                                });
    }

    const std::int64_t left_count_;
    const std::int64_t right_count_;
    const EqualValues &values_;
    Work &work_;
    EqualIds ids_;
    bool any_integers_ = false; // on the right
};

// Ids of pairs of ids.
Status combine(EqualIds &ids, const EqualIds &further, Work &work)
{
    const std::uint64_t product = std::uint64_t{ids.domain} * further.domain;
    const auto rows = static_cast<std::int64_t>(ids.left.size() + ids.right.size());
    if (fits_directly(product, rows)) {
        const auto both = [&](RowNumbers &a, const RowNumbers &b) {
            return work.for_blocks(static_cast<std::int64_t>(a.size()), rows_per_block, 0.2,
                                   [&](std::int64_t begin, std::int64_t end, unsigned) {
                                       for (auto row = static_cast<std::size_t>(begin);
                                            row < static_cast<std::size_t>(end); ++row)
                                           a[row] = a[row] == null_row || b[row] == null_row
                                                        ? null_row
                                                        : a[row] * further.domain + b[row];
                                       return Status();
                                   });
        };
        Status done = both(ids.right, further.right);
        if (done.ok())
            done = both(ids.left, further.left);
        ids.domain = static_cast<std::uint32_t>(std::max<std::uint64_t>(product, 1));
        return done;
    }
    PairIds pairs(std::min<std::size_t>(ids.right.size(), 1 << 16));
    for (std::size_t row = 0; row < ids.right.size(); ++row) {
        if (row % rows_per_block == 0)
            if (Status told = work.poll(); !told.ok())
                return told;
        RowNumber &id = ids.right[row];
        id =
            id == null_row || further.right[row] == null_row ? null_row : pairs.id_of(id, further.right[row]);
    }
    ids.domain = std::max(pairs.count(), 1u);
    return work.for_blocks(
        static_cast<std::int64_t>(ids.left.size()), rows_per_block, 0.2,
        [&](std::int64_t begin, std::int64_t end, unsigned) {
            for (auto row = static_cast<std::size_t>(begin); row < static_cast<std::size_t>(end); ++row) {
                RowNumber &id = ids.left[row];
                id = id == null_row || further.left[row] == null_row ? null_row
                                                                     : pairs.find(id, further.left[row]);
            }
            return Status();
        });
}

} // namespace

Result<EqualIds> equal_ids(std::int64_t left_count, std::int64_t right_count,
                           const std::vector<EqualValues> &values, Work &work)
{
    EqualIds ids;
    if (values.empty()) {
        ids.left.assign(static_cast<std::size_t>(left_count), 0);
        ids.right.assign(static_cast<std::size_t>(right_count), 0);
        return ids;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        auto next = ValueIds(left_count, right_count, values[i], work).make();
        if (!next.ok())
            return next;
        if (i == 0)
            ids = std::move(*next);
        else if (Status done = combine(ids, *next, work); !done.ok())
            return done;
    }
    return ids;
}

} // namespace orvane
