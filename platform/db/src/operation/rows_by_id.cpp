#include "operation/rows_by_id.h"

#include <algorithm>
#include <atomic>
#include <numeric>

namespace orvane {

namespace {

constexpr std::size_t few_rows = 64 << 10; // for which one thread is enough
constexpr std::size_t rows_between_polls = 64 << 10;
constexpr std::uint64_t ids_of_a_word = 64;
constexpr std::int64_t rows_per_block = 128 << 10;
constexpr std::int64_t filled_at_once = 1 << 20;
constexpr std::size_t rows_ahead = 64; // whose places are fetched before it is their turn

// Gives each thread a range of the ids to itself, so that what it writes is nobody else's: every thread reads
// all ids and calls `visit` with those of its range and their rows, ascending, for as long as that answers
// true.
template <typename Visit>
Status scan_ids(const RowNumbers &ids, std::uint32_t domain, Work &work, double share, Visit visit)
{
    const std::uint64_t parts = ids.size() < few_rows ? 1 : thread_limit();
    const std::uint64_t of_part = (domain / parts / ids_of_a_word + 1) * ids_of_a_word;
    return work.for_blocks(
        static_cast<std::int64_t>(parts), 1, share, [&](std::int64_t part, std::int64_t, unsigned thread) {
            const std::uint64_t low = static_cast<std::uint64_t>(part) * of_part;
            if (low >= domain)
                return Status();
            const auto first = static_cast<RowNumber>(low);
            const auto count = static_cast<RowNumber>(std::min<std::uint64_t>(of_part, domain - low));
            for (std::size_t begin = 0; begin < ids.size() && !work.stopped(); begin += rows_between_polls) {
                if (thread == 0)
                    if (Status told = work.poll(); !told.ok())
                        return told;
                const std::size_t end = std::min(ids.size(), begin + rows_between_polls);
                for (std::size_t row = begin; row < end; ++row)
                    if (ids[row] - first < count && !visit(ids[row], static_cast<RowNumber>(row)))
                        return Status();
            }
            return Status();
        });
}

// Ends the putting in place of rows, of which nothing is kept.
Status found_several()
{
    return Status(Code::Argument, "several rows have the same id");
}

// Fills on all threads: the pages of a large array are new to the system.
template <typename T>
Status fill(Buffer<T> &values, std::size_t size, T value, Work &work)
{
    values.resize(size);
    return work.for_blocks(static_cast<std::int64_t>(size), filled_at_once, 0.05,
                           [&](std::int64_t begin, std::int64_t end, unsigned) {
                               std::fill(values.begin() + begin, values.begin() + end, value);
                               return Status();
                           });
}

} // namespace

Result<RowBuckets> row_buckets(const RowNumbers &ids, std::uint32_t domain, Work &work)
{
    RowBuckets buckets;
    RowNumbers &begins = buckets.begins;
    Status done = fill(begins, std::size_t{domain} + 2, RowNumber{0}, work);
    if (done.ok())
        done = scan_ids(ids, domain, work, 0.2, [&](RowNumber id, RowNumber) {
            ++begins[std::size_t{id} + 2];
            return true;
        });
    if (!done.ok())
        return done;
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    buckets.rows.resize(begins.back());
    done = scan_ids(ids, domain, work, 0.2, [&](RowNumber id, RowNumber row) {
        buckets.rows[begins[std::size_t{id} + 1]++] = row;
        return true;
    });
    if (!done.ok())
        return done;
    begins.pop_back();
    return buckets;
}

// Each thread puts its rows in place. Where two have the same id one of them stays, which shows in the number
// of places that were taken; most often the second finds that the first was there.
Result<RowNumbers> only_rows(const RowNumbers &ids, std::uint32_t domain, Work &work)
{
    RowNumbers rows;
    std::atomic<bool> several = false;
    std::atomic<std::size_t> with_id = 0;
    std::atomic<std::size_t> taken = 0;
    Status done = fill(rows, domain, null_row, work);
    if (done.ok())
        done = work.for_blocks(
            static_cast<std::int64_t>(ids.size()), rows_per_block, 0.2,
            [&](std::int64_t begin, std::int64_t end, unsigned) {
                std::size_t count = 0;
                std::size_t met = 0;
                for (auto row = static_cast<std::size_t>(begin); row < static_cast<std::size_t>(end); ++row) {
                    if (row + rows_ahead < ids.size())
                        __builtin_prefetch(&rows[std::min(ids[row + rows_ahead], domain - 1)], 1);
                    if (ids[row] >= domain)
                        continue;
                    const std::atomic_ref<RowNumber> place(rows[ids[row]]);
                    met += place.load(std::memory_order_relaxed) != null_row ? 1 : 0;
                    place.store(static_cast<RowNumber>(row), std::memory_order_relaxed);
                    ++count;
                }
                if (met > 0)
                    several.store(true, std::memory_order_relaxed);
                with_id.fetch_add(count, std::memory_order_relaxed);
                return several.load(std::memory_order_relaxed) ? found_several() : Status();
            });
    if (several)
        return RowNumbers();
    if (done.ok())
        done = work.for_blocks(
            domain, filled_at_once, 0.05, [&](std::int64_t begin, std::int64_t end, unsigned) {
                taken.fetch_add(static_cast<std::size_t>(
                    (end - begin) - std::count(rows.begin() + begin, rows.begin() + end, null_row)));
                return Status();
            });
    if (!done.ok())
        return done;
    return taken < with_id ? RowNumbers() : std::move(rows);
}

// Each part of the rows has a set of its own, which is small enough to stay in a cache; in the end they are
// one.
Result<IdSet> id_set(const RowNumbers &ids, std::uint32_t domain, Work &work)
{
    const std::size_t words = domain / ids_of_a_word + 1;
    // No more of them than take about as much memory as the ids.
    const std::size_t parts = ids.size() < few_rows ? 1
                                                    : std::clamp<std::size_t>(ids.size() / 2 / words, 1,
                                                                              std::size_t{thread_limit()});
    const std::size_t rows_of_part = ids.size() / parts + 1;
    std::vector<Buffer<std::uint64_t>> sets(parts);
    Status done = work.for_blocks(
        static_cast<std::int64_t>(parts), 1, 0.2, [&](std::int64_t part, std::int64_t, unsigned thread) {
            Buffer<std::uint64_t> &bits = sets[static_cast<std::size_t>(part)];
            bits.assign(words, 0);
            const std::size_t last =
                std::min(ids.size(), (static_cast<std::size_t>(part) + 1) * rows_of_part);
            for (std::size_t begin = static_cast<std::size_t>(part) * rows_of_part;
                 begin < last && !work.stopped(); begin += rows_between_polls) {
                if (thread == 0)
                    if (Status told = work.poll(); !told.ok())
                        return told;
                const std::size_t end = std::min(last, begin + rows_between_polls);
                for (std::size_t row = begin; row < end; ++row)
                    if (const RowNumber id = ids[row]; id < domain)
                        bits[id / ids_of_a_word] |= std::uint64_t{1} << (id % ids_of_a_word);
            }
            return Status();
        });
    if (!done.ok())
        return done;
    IdSet set;
    set.bits_ = std::move(sets.front());
    for (std::size_t part = 1; part < parts; ++part)
        for (std::size_t word = 0; word < words; ++word)
            set.bits_[word] |= sets[part][word];
    return set;
}

} // namespace orvane
