// Ranges of rows as intervals of numbers, and which of many intervals meet one.
#pragma once

#include "operation/equal_ids.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace orvane {

// From `low` to `high`, both included, of numbers ordered as sort_keys.h says. Empty where high is less.
struct Interval {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    constexpr bool is_empty() const { return high < low; }
    bool meets(const Interval &other) const { return low <= other.high && other.low <= high; }
};
constexpr Interval empty_interval{1, 0};
constexpr Interval open_interval{0, ~std::uint64_t{0}};

// The interval of each row of one side.
class IntervalSource
{
public:
    virtual ~IntervalSource() = default;
    // Of the rows [begin, end). Called by several threads.
    virtual void fill(std::int64_t begin, std::int64_t end, Interval *out) const = 0;
    // Whether each is a single number, or empty.
    virtual bool has_points() const = 0;
};

// What numbers intervals are made of: so that both sides are of one kind.
enum class IntervalScale { Integers, Reals, Times };
IntervalScale interval_scale(FieldType left, FieldType right);

// The range between two fields, of which an end that is null is open; or, where both are one, its value,
// without which the interval is empty. On the scale of times a yearday is the whole day.
std::unique_ptr<IntervalSource> range_intervals(RowColumn begin, RowColumn end, bool is_point,
                                                IntervalScale scale);

// Bounds of a row's interval: the numbers of `values`. A row without a value, or with a null, has an empty
// interval.
struct IntervalBound {
    enum class Kind { Low, AboveLow, High, BelowHigh, Point };
    Kind kind;
    SideValues values;
};

// What all bounds leave. Values are all integers or all real.
std::unique_ptr<IntervalSource> bounded_intervals(std::vector<IntervalBound> bounds);

// The rows of buckets with their intervals, so that those that meet another interval are found without trying
// all.
class IntervalIndex
{
public:
    struct Entry {
        Interval interval;
        RowNumber row;
        // Without branches, as nobody can foresee them.
        bool meets(const Interval &sought) const
        {
            return (interval.low <= sought.high) & (sought.low <= interval.high) &
                   (interval.low <= interval.high);
        }
    };

    // `rows` are the rows bucket by bucket, ascending within each; bucket i is [begins[i], begins[i + 1]) of
    // them. Rows with empty intervals are left out. Both stay the caller's and have to outlive the index.
    Status build(const RowNumbers &begins, const RowNumbers &rows, const IntervalSource &source,
                 std::int64_t row_count, Work &work);

    // Appends the rows of a bucket whose intervals meet one, ascending; or, if it is enough to know whether
    // there are any, perhaps not all of them.
    void find(std::size_t bucket, const Interval &sought, bool any, std::vector<RowNumber> &found) const;

    // Whether all buckets are so small that their entries are best tried one by one, and found where they are
    // without asking where a bucket begins.
    bool has_small_buckets() const { return small_; }
    // Each of them has room for so many entries then, of which those behind its own are empty. Behind the
    // last bucket there is one of empty entries alone. Empty ones are from the highest number to the lowest.
    std::size_t bucket_room() const { return room_; }
    static constexpr std::size_t most_room = 16;
    const Interval *padded_intervals() const { return padded_intervals_.data(); }
    const RowNumber *padded_rows() const { return padded_rows_.data(); }

private:
    void pad(std::size_t largest);
    Status sort_by_low_ends(Work &work);
    std::uint64_t note_highest(std::size_t begin, std::size_t end);
    void visit(std::size_t begin, std::size_t end, const Interval &sought, bool any,
               std::vector<RowNumber> &found) const;

    const RowNumbers *begins_ = nullptr;
    bool small_ = false;
    std::size_t room_ = 0;
    std::vector<Interval> padded_intervals_; // of small buckets, and their rows
    std::vector<RowNumber> padded_rows_;
    std::vector<Entry> entries_;         // by bucket, then by low end; by row where no bucket is large
    std::vector<std::uint64_t> highest_; // of the entries of a range of which an entry is the middle one
};

} // namespace orvane
