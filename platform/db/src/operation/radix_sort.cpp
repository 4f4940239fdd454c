#include "operation/radix_sort.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <numeric>
#include <utility>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 64 << 10;
constexpr int spread_bits = 10; // of the first pass: so many places are written to at a time
constexpr int digit_bits = 8;   // of the passes inside a bucket, which stay in the cache
constexpr std::size_t few_rows = 40;

// Keys with the rows that they are of.
struct Items {
    Buffer<std::uint64_t> keys;
    RowNumbers rows;

    void resize(std::size_t count)
    {
        keys.resize(count);
        rows.resize(count);
    }
};

// One place of the items between two passes.
struct Slice {
    std::uint64_t *keys;
    RowNumber *rows;
};
Slice slice_of(Items &items, std::size_t at)
{
    return {items.keys.data() + at, items.rows.data() + at};
}

void insertion_sort(Slice items, std::size_t count)
{
    for (std::size_t i = 1; i < count; ++i) {
        const std::uint64_t key = items.keys[i];
        const RowNumber row = items.rows[i];
        std::size_t at = i;
        for (; at > 0 && items.keys[at - 1] > key; --at) {
            items.keys[at] = items.keys[at - 1];
            items.rows[at] = items.rows[at - 1];
        }
        items.keys[at] = key;
        items.rows[at] = row;
    }
}

// One stable pass by the digit at `shift`.
void scatter(Slice from, Slice to, std::size_t count, int shift)
{
    std::array<std::uint32_t, 1 << digit_bits> places{};
    constexpr std::uint64_t mask = (1 << digit_bits) - 1;
    for (std::size_t i = 0; i < count; ++i)
        ++places[(from.keys[i] >> shift) & mask];
    std::uint32_t next = 0;
    for (std::uint32_t &place : places)
        next += std::exchange(place, next);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t place = places[(from.keys[i] >> shift) & mask]++;
        to.keys[place] = from.keys[i];
        to.rows[place] = from.rows[i];
    }
}

// Sorts a bucket by the bits in which its keys differ; the outcome is in `home`. It is in `items` now, which
// is either `home` or `spare`; the latter is not touched where no keys differ.
void sort_bucket(Slice items, Slice home, Slice spare, std::size_t count, const Work &work)
{
    std::uint64_t different = 0;
    for (std::size_t i = 1; i < count; ++i)
        different |= items.keys[i] ^ items.keys[0];
    Slice other = items.rows == home.rows ? spare : home;
    for (int shift = 0; count > few_rows && shift < 64 && different >> shift != 0; shift += digit_bits) {
        if (((different >> shift) & ((1 << digit_bits) - 1)) == 0)
            continue;
        if (work.stopped())
            return;
        scatter(items, other, count, shift);
        std::swap(items, other);
    }
    if (items.rows != home.rows) {
        std::copy_n(items.keys, count, home.keys);
        std::copy_n(items.rows, count, home.rows);
    }
    if (count <= few_rows)
        insertion_sort(home, count);
}

// Sorts by one word: spreads the items over buckets by the highest bits in which they differ, those of large
// buckets again, and sorts the small buckets in the cache. New memory costs more than the sorting, so that
// keys are spread from where they are given, and a second place for all items is only had where it is needed.
class WordSort
{
public:
    WordSort(std::size_t count, Work &work)
        : count_(count), work_(work), parts_((count + part_rows - 1) / part_rows), scratch_(thread_limit())
    {
    }

    // The order of the rows so far decides among equals: that of their numbers where `rows` is empty.
    Status sort(const SortKeys::Word &word, RowNumbers &rows)
    {
        home_.resize(count_);
        Bucket all{0, count_, Where::Given};
        given_ = {word.keys.data(), nullptr};
        if (!rows.empty() || count_ <= small_bucket) {
            all.where = rows.empty() ? Where::Home : Where::Spare;
            if (Status taken = take(word, rows, rows.empty() ? home_ : spare()); !taken.ok())
                return taken;
        }
        std::vector<Bucket> large{all};
        std::vector<Bucket> small;
        Status done;
        while (done.ok() && !large.empty()) {
            const Bucket bucket = large.back();
            large.pop_back();
            done = spread(bucket, small, large);
        }
        if (done.ok())
            done = sort_small(small);
        if (done.ok())
            rows.swap(home_.rows);
        return done;
    }

private:
    static constexpr std::size_t part_rows = 256 << 10;
    static constexpr std::size_t small_bucket = 128 << 10;
    static constexpr std::size_t fan_out = std::size_t{1} << spread_bits;
    using Places = std::array<std::uint32_t, fan_out>;

    // Where items are: in the word, row by row; or in one of the two places for them.
    enum class Where { Given, Home, Spare };
    struct Bucket {
        std::size_t begin;
        std::size_t end;
        Where where;
        std::size_t size() const { return end - begin; }
    };
    struct Source {
        const std::uint64_t *keys;
        const RowNumber *rows; // null: item n is of row n
    };

    Items &spare()
    {
        spare_.resize(count_);
        return spare_;
    }
    Source source_of(Where where) const
    {
        if (where == Where::Given)
            return given_;
        const Items &items = where == Where::Home ? home_ : spare_;
        return {items.keys.data(), items.rows.data()};
    }

    Status take(const SortKeys::Word &word, const RowNumbers &rows, Items &into)
    {
        return work_.for_blocks(
            static_cast<std::int64_t>(count_), rows_per_block, 0.1,
            [&](std::int64_t begin, std::int64_t end, unsigned) {
                for (auto i = static_cast<std::size_t>(begin); i < static_cast<std::size_t>(end); ++i) {
                    const RowNumber row = rows.empty() ? static_cast<RowNumber>(i) : rows[i];
                    into.rows[i] = row;
                    into.keys[i] = word.keys[row];
                }
                return Status();
            });
    }

    // Runs over the rows of a bucket in parts, each with counters of its own.
    template <typename Body>
    Status for_parts(const Bucket &bucket, Body body)
    {
        const std::size_t parts = (bucket.size() + part_rows - 1) / part_rows;
        return work_.for_blocks(
            static_cast<std::int64_t>(parts), 1, 0.15, [&](std::int64_t part, std::int64_t, unsigned) {
                const std::size_t begin = bucket.begin + static_cast<std::size_t>(part) * part_rows;
                body(begin, std::min(bucket.end, begin + part_rows), parts_[static_cast<std::size_t>(part)]);
                return Status();
            });
    }

    Status spread(const Bucket &bucket, std::vector<Bucket> &small, std::vector<Bucket> &large)
    {
        if (bucket.size() <= small_bucket) {
            small.push_back(bucket);
            return Status();
        }
        const Source from = source_of(bucket.where);
        std::uint64_t different = 0;
        if (Status found = find_different(bucket, from, different); !found.ok())
            return found;
        if (different == 0 && bucket.where != Where::Given) { // in order as it is
            small.push_back(bucket);
            return Status();
        }
        const Where where = bucket.where == Where::Home ? Where::Spare : Where::Home;
        Items &to = where == Where::Home ? home_ : spare();
        const int shift = std::max(0, static_cast<int>(std::bit_width(different)) - spread_bits);
        constexpr std::uint64_t mask = fan_out - 1;
        Status done = for_parts(bucket, [&](std::size_t begin, std::size_t end, Places &places) {
            places.fill(0);
            for (std::size_t i = begin; i < end; ++i)
                ++places[(from.keys[i] >> shift) & mask];
        });
        if (!done.ok())
            return done;
        place_parts(bucket, where, shift == 0, small, large);
        return for_parts(bucket, [&](std::size_t begin, std::size_t end, Places &places) {
            std::uint64_t *const keys = to.keys.data();
            RowNumber *const rows = to.rows.data();
            for (std::size_t i = begin; i < end; ++i) {
                const std::uint32_t to_place = places[(from.keys[i] >> shift) & mask]++;
                keys[to_place] = from.keys[i];
                rows[to_place] = from.rows ? from.rows[i] : static_cast<RowNumber>(i);
            }
        });
    }

    Status find_different(const Bucket &bucket, const Source &items, std::uint64_t &different)
    {
        std::atomic<std::uint64_t> all = 0;
        Status done = for_parts(bucket, [&](std::size_t begin, std::size_t end, Places &) {
            std::uint64_t here = 0;
            const std::uint64_t first = items.keys[bucket.begin];
            for (std::size_t i = begin; i < end; ++i)
                here |= items.keys[i] ^ first;
            all.fetch_or(here);
        });
        different = all;
        return done;
    }

    // Turns the counts of the parts into the places that they write to, and lists the buckets that come of
    // it.
    void place_parts(const Bucket &bucket, Where where, bool in_order, std::vector<Bucket> &small,
                     std::vector<Bucket> &large)
    {
        const std::size_t parts = (bucket.size() + part_rows - 1) / part_rows;
        auto next = static_cast<std::uint32_t>(bucket.begin);
        for (std::size_t digit = 0; digit < fan_out; ++digit) {
            const std::uint32_t begin = next;
            for (std::size_t part = 0; part < parts; ++part)
                next += std::exchange(parts_[part][digit], next);
            if (next == begin)
                continue;
            const Bucket made{begin, next, where};
            (made.size() <= small_bucket || in_order ? small : large).push_back(made);
        }
    }

    Status sort_small(const std::vector<Bucket> &small)
    {
        return work_.for_blocks(static_cast<std::int64_t>(small.size()), 1, 0.8,
                                [&](std::int64_t at, std::int64_t, unsigned thread) {
                                    const Bucket &bucket = small[static_cast<std::size_t>(at)];
                                    const Slice home = slice_of(home_, bucket.begin);
                                    if (bucket.where == Where::Spare) {
                                        const Slice spare = slice_of(spare_, bucket.begin);
                                        sort_bucket(spare, home, spare, bucket.size(), work_);
                                        return Status();
                                    }
                                    // Larger ones are of one key.
                                    Items &scratch = scratch_[thread];
                                    scratch.resize(
                                        std::max(scratch.rows.size(), std::min(bucket.size(), small_bucket)));
                                    sort_bucket(home, home, slice_of(scratch, 0), bucket.size(), work_);
                                    return Status();
                                });
    }

    const std::size_t count_;
    Work &work_;
    Items home_;
    Items spare_; // empty while it isn't needed
    Source given_{};
    std::vector<Places> parts_;
    std::vector<Items> scratch_; // by thread, for one small bucket
};

} // namespace

Result<RowNumbers> sorted_rows(const SortKeys &keys, Work &work)
{
    const auto count = static_cast<std::size_t>(keys.count);
    RowNumbers rows;
    if (keys.in_order) {
        rows.resize(count);
        std::iota(rows.begin(), rows.end(), RowNumber{0});
        return rows;
    }
    WordSort sort(count, work);
    // The word that weighs least goes first: each pass keeps the order of the one before among equals.
    for (std::size_t word = keys.words.size(); word-- > 0;)
        if (Status done = sort.sort(keys.words[word], rows); !done.ok())
            return done;
    return rows;
}

} // namespace orvane
