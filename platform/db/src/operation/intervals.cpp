#include "operation/intervals.h"

#include "operation/radix_sort.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 32 << 10;
constexpr std::size_t few = IntervalIndex::most_room; // entries that are tried one by one
constexpr std::size_t most_padded = 8;                // times the entries in the room of all buckets

// The first second of a day. Days beyond their year's end, as in 9999999 for ever, go on into the next.
double begin_of_day(std::int64_t yearday)
{
    using namespace std::chrono;
    const std::int64_t year_number = std::clamp<std::int64_t>(yearday / 1000, -32000, 32000);
    const sys_days first = year{static_cast<int>(year_number)} / January / 1;
    return 86400.0 * static_cast<double>(first.time_since_epoch().count() + yearday % 1000 - 1);
}

struct Bounds {
    std::uint64_t low;
    std::uint64_t high;
};

Bounds bounds_of_integer(std::int64_t value, FieldType type, IntervalScale scale)
{
    if (scale == IntervalScale::Integers)
        return {ordered_bits(value), ordered_bits(value)};
    if (scale == IntervalScale::Times && type == FieldType::Yearday) {
        const double begin = begin_of_day(value);
        return {ordered_bits(begin), ordered_bits(begin + 86400.0) - 1};
    }
    const std::uint64_t number = ordered_bits(static_cast<double>(value));
    return {number, number};
}

// Intervals of single values; empty for nulls.
template <typename T>
void fill_points(const RowColumn &from, const Buffer<T> &values, T null, std::int64_t begin, std::int64_t end,
                 Interval *out)
{
    const auto point = [null](T value) {
        const std::uint64_t number = ordered_bits(value);
        return value != null ? Interval{number, number} : empty_interval;
    };
    const auto last = static_cast<std::size_t>(end);
    if (from.rows)
        for (auto row = static_cast<std::size_t>(begin); row < last; ++row)
            *out++ = point(values[from.at(row)]);
    else
        for (auto row = static_cast<std::size_t>(begin); row < last; ++row)
            *out++ = point(values[row]);
}

class RangeIntervals : public IntervalSource
{
public:
    RangeIntervals(RowColumn begin, RowColumn end, bool is_point, IntervalScale scale)
        : begin_(begin), end_(end), is_point_(is_point), scale_(scale)
    {
    }

    void fill(std::int64_t begin, std::int64_t end, Interval *out) const override
    {
        if (has_points()) {
            fill_points(begin_, begin_.column->integers, begin_.column->null_integer, begin, end, out);
            return;
        }
        for (std::int64_t row = begin; row < end; ++row)
            *out++ = of_row(static_cast<std::size_t>(row));
    }

    bool has_points() const override { return is_point_ && scale_ == IntervalScale::Integers; }

private:
    Interval of_row(std::size_t row) const
    {
        Bounds low, high;
        const bool has_low = value(begin_, row, low);
        if (is_point_)
            return has_low ? Interval{low.low, low.high} : empty_interval;
        const bool has_high = value(end_, row, high);
        return Interval{has_low ? low.low : open_interval.low, has_high ? high.high : open_interval.high};
    }

    // False for a null.
    bool value(const RowColumn &from, std::size_t row, Bounds &bounds) const
    {
        const Column &column = *from.column;
        const std::size_t at = from.at(row);
        if (column.storage() == ColumnStorage::Integer) {
            const std::int64_t number = column.integers[at];
            bounds = bounds_of_integer(number, column.type, scale_);
            return number != column.null_integer;
        }
        const double number = column.reals[at];
        bounds.low = bounds.high = ordered_bits(number);
        return number != column.null_real;
    }

    const RowColumn begin_;
    const RowColumn end_;
    const bool is_point_;
    const IntervalScale scale_;
};

class BoundedIntervals : public IntervalSource
{
public:
    explicit BoundedIntervals(std::vector<IntervalBound> bounds) : bounds_(std::move(bounds)) {}

    void fill(std::int64_t begin, std::int64_t end, Interval *out) const override
    {
        const IntervalBound &first = bounds_.front();
        if (has_points() && !first.values.missing) {
            const RowColumn &from = first.values.column;
            if (from.column->storage() == ColumnStorage::Integer)
                fill_points(from, from.column->integers, from.column->null_integer, begin, end, out);
            else
                fill_points(from, from.column->reals, from.column->null_real, begin, end, out);
            return;
        }
        std::fill(out, out + (end - begin), open_interval);
        for (const IntervalBound &bound : bounds_)
            for (std::int64_t row = begin; row < end; ++row)
                narrow(out[row - begin], bound, static_cast<std::size_t>(row));
    }

    bool has_points() const override
    {
        return bounds_.size() == 1 && bounds_.front().kind == IntervalBound::Kind::Point;
    }

private:
    static void narrow(Interval &interval, const IntervalBound &bound, std::size_t row)
    {
        const SideValues &values = bound.values;
        const Column &column = *values.column.column;
        const std::size_t at = values.column.at(row);
        const bool integer = column.storage() == ColumnStorage::Integer;
        if (values.is_missing(row) ||
            (integer ? column.integers[at] == column.null_integer : column.reals[at] == column.null_real)) {
            interval = empty_interval;
            return;
        }
        using Kind = IntervalBound::Kind;
        const std::uint64_t number =
            integer ? ordered_bits(column.integers[at]) : ordered_bits(column.reals[at]);
        if ((bound.kind == Kind::AboveLow && number == open_interval.high) ||
            (bound.kind == Kind::BelowHigh && number == open_interval.low)) {
            interval = empty_interval;
            return;
        }
        if (bound.kind == Kind::Low || bound.kind == Kind::Point || bound.kind == Kind::AboveLow)
            interval.low = std::max(interval.low, number + (bound.kind == Kind::AboveLow ? 1 : 0));
        if (bound.kind == Kind::High || bound.kind == Kind::Point || bound.kind == Kind::BelowHigh)
            interval.high = std::min(interval.high, number - (bound.kind == Kind::BelowHigh ? 1 : 0));
    }

    const std::vector<IntervalBound> bounds_;
};

} // namespace

std::unique_ptr<IntervalSource> bounded_intervals(std::vector<IntervalBound> bounds)
{
    return std::make_unique<BoundedIntervals>(std::move(bounds));
}

IntervalScale interval_scale(FieldType left, FieldType right)
{
    if (left == FieldType::Time || right == FieldType::Time)
        return IntervalScale::Times;
    return is_integer(left) && is_integer(right) ? IntervalScale::Integers : IntervalScale::Reals;
}

std::unique_ptr<IntervalSource> range_intervals(RowColumn begin, RowColumn end, bool is_point,
                                                IntervalScale scale)
{
    return std::make_unique<RangeIntervals>(begin, end, is_point, scale);
}

// ---- Finding -------------------------------------------------------------------------------------

Status IntervalIndex::build(const RowNumbers &begins, const RowNumbers &rows, const IntervalSource &source,
                            std::int64_t row_count, Work &work)
{
    begins_ = &begins;
    std::vector<Interval> intervals(static_cast<std::size_t>(row_count));
    Status done =
        work.for_blocks(row_count, rows_per_block, 0.1, [&](std::int64_t begin, std::int64_t end, unsigned) {
            source.fill(begin, end, intervals.data() + begin);
            return Status();
        });
    if (!done.ok())
        return done;
    std::vector<Entry> entries(rows.size());
    done = work.for_blocks(static_cast<std::int64_t>(rows.size()), rows_per_block, 0.1,
                           [&](std::int64_t begin, std::int64_t end, unsigned) {
                               for (auto i = static_cast<std::size_t>(begin);
                                    i < static_cast<std::size_t>(end); ++i)
                                   entries[i] = Entry{intervals[rows[i]], rows[i]};
                               return Status();
                           });
    if (!done.ok())
        return done;
    entries_.swap(entries);
    const std::size_t buckets = begins.size() - 1;
    std::size_t largest = 0;
    for (std::size_t bucket = 0; bucket < buckets && largest <= few; ++bucket)
        largest = std::max<std::size_t>(largest, begins[bucket + 1] - begins[bucket]);
    if (largest <= few) {
        if ((buckets + 1) * largest <= most_padded * (entries_.size() + 1))
            pad(std::max<std::size_t>(largest, 1));
        return Status();
    }
    if (Status sorted = sort_by_low_ends(work); !sorted.ok())
        return sorted;
    highest_.resize(rows.size());
    const std::int64_t block = std::max<std::int64_t>(1, static_cast<std::int64_t>(buckets) * rows_per_block /
                                                             std::max<std::int64_t>(1, row_count));
    return work.for_blocks(static_cast<std::int64_t>(buckets), block, 0.2,
                           [&](std::int64_t begin, std::int64_t end, unsigned) {
                               for (std::int64_t bucket = begin; bucket < end && !work.stopped(); ++bucket)
                                   note_highest(begins[static_cast<std::size_t>(bucket)],
                                                begins[static_cast<std::size_t>(bucket) + 1]);
                               return Status();
                           });
}

void IntervalIndex::pad(std::size_t largest)
{
    small_ = true;
    room_ = largest;
    const std::size_t buckets = begins_->size() - 1;
    // What no interval meets that has an end.
    constexpr Interval unmet{open_interval.high, open_interval.low};
    static_assert(unmet.is_empty());
    padded_intervals_.assign((buckets + 1) * room_, unmet);
    padded_rows_.assign((buckets + 1) * room_, null_row);
    for (std::size_t bucket = 0; bucket < buckets; ++bucket) {
        std::size_t at = bucket * room_;
        for (std::size_t i = (*begins_)[bucket]; i < (*begins_)[bucket + 1]; ++i, ++at) {
            padded_intervals_[at] = entries_[i].interval.is_empty() ? unmet : entries_[i].interval;
            padded_rows_[at] = entries_[i].row;
        }
    }
}

// The entries of each bucket by their low ends; equal ones stay in order of their rows.
Status IntervalIndex::sort_by_low_ends(Work &work)
{
    SortKeys keys;
    keys.count = static_cast<std::int64_t>(entries_.size());
    keys.words.resize(2);
    for (SortKeys::Word &word : keys.words)
        word.keys.resize(entries_.size());
    const auto buckets = static_cast<std::size_t>(begins_->size()) - 1;
    std::uint64_t all = 0;
    for (std::size_t bucket = 0; bucket < buckets; ++bucket)
        for (std::size_t i = (*begins_)[bucket]; i < (*begins_)[bucket + 1]; ++i) {
            keys.words[0].keys[i] = bucket;
            keys.words[1].keys[i] = entries_[i].interval.low;
            all |= entries_[i].interval.low;
            keys.in_order = keys.in_order && (i == (*begins_)[bucket] ||
                                              entries_[i - 1].interval.low <= entries_[i].interval.low);
        }
    if (keys.in_order)
        return Status();
    keys.words[0].bits = std::bit_width(buckets - 1);
    keys.words[1].bits = std::bit_width(all);
    if (buckets == 1)
        keys.words.erase(keys.words.begin());
    const auto order = sorted_rows(keys, work);
    if (!order.ok())
        return order.status();
    std::vector<Entry> sorted(entries_.size());
    for (std::size_t i = 0; i < sorted.size(); ++i)
        sorted[i] = entries_[(*order)[i]];
    entries_.swap(sorted);
    return Status();
}

std::uint64_t IntervalIndex::note_highest(std::size_t begin, std::size_t end)
{
    if (begin >= end)
        return 0;
    const std::size_t middle = begin + (end - begin) / 2;
    const Interval &own = entries_[middle].interval;
    const std::uint64_t of_own = own.is_empty() ? 0 : own.high;
    return highest_[middle] = std::max({of_own, note_highest(begin, middle), note_highest(middle + 1, end)});
}

void IntervalIndex::visit(std::size_t begin, std::size_t end, const Interval &sought, bool any,
                          std::vector<RowNumber> &found) const
{
    while (begin < end && !(any && !found.empty())) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (highest_[middle] < sought.low)
            return;
        visit(begin, middle, sought, any, found);
        const Entry &entry = entries_[middle];
        if (entry.interval.low > sought.high)
            return;
        if (entry.meets(sought))
            found.push_back(entry.row);
        begin = middle + 1;
    }
}

void IntervalIndex::find(std::size_t bucket, const Interval &sought, bool any,
                         std::vector<RowNumber> &found) const
{
    if (sought.is_empty())
        return;
    const std::size_t begin = (*begins_)[bucket];
    const std::size_t end = (*begins_)[bucket + 1];
    const auto before = static_cast<std::ptrdiff_t>(found.size());
    if (end - begin <= few) {
        for (std::size_t i = begin; i < end; ++i)
            if (entries_[i].meets(sought))
                found.push_back(entries_[i].row);
    } else {
        visit(begin, end, sought, any, found);
    }
    // By their low ends they stand beside a large bucket in small ones, too.
    if (!std::is_sorted(found.begin() + before, found.end()))
        std::sort(found.begin() + before, found.end());
}

} // namespace orvane
