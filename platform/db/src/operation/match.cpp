#include "operation/match.h"

#include "base/concat.h"
#include "operation/row_batch.h"
#include "operation/rows_by_id.h"

#include <algorithm>
#include <atomic>
#include <bit>

namespace orvane {

namespace {

constexpr std::size_t batch_pairs = expr::ExpressionExecutor::batch_size;
constexpr std::int64_t pairs_per_block = 256 << 10; // about so many candidates between two looks at the hook
constexpr std::int64_t max_rows_per_block = 32 << 10;
constexpr std::int64_t cached_rows = 2048;              // whose intervals stay in the nearest cache
constexpr std::int64_t plain_rows_per_block = 64 << 10; // where ids decide alone
constexpr std::uint64_t pairs_between_memory_checks = 32 << 20;

// Which of a small bucket's entries a left row meets.
using EntryBits = std::uint16_t;
static_assert(8 * sizeof(EntryBits) >= IntervalIndex::most_room);

// What a block of left rows came to.
struct BlockPairs {
    RowNumbers left;
    RowNumbers right;
};

class Matching
{
public:
    // `any`: it is enough to know whether a left row has a match.
    Matching(const Operand &left, const Operand &right, const MatchTerms &terms, bool any, Work &work)
        : left_(left), right_(right), terms_(terms), any_(any), work_(work), probes_(thread_limit())
    {
    }

    Status prepare()
    {
        auto ids = equal_ids(left_.row_count(), right_.row_count(), terms_.equal, work_);
        if (!ids.ok())
            return ids.status();
        leave_out(ids->left, terms_.left_out);
        leave_out(ids->right, terms_.right_out);
        ids_ = std::move(ids->left);
        if (terms_.intervals.empty() && !terms_.condition) {
            auto prepared = prepare_for_ids(*ids);
            if (!prepared.ok() || *prepared)
                return prepared.status();
        }
        auto buckets = row_buckets(ids->right, ids->domain, work_);
        if (!buckets.ok())
            return buckets.status();
        buckets_ = std::move(*buckets);
        if (terms_.intervals.empty())
            return Status();
        for (std::size_t i = 1; i < terms_.intervals.size(); ++i) {
            further_.emplace_back(static_cast<std::size_t>(right_.row_count()));
            terms_.intervals[i].right->fill(0, right_.row_count(), further_.back().data());
        }
        return index_.build(buckets_.begins, buckets_.rows, *terms_.intervals.front().right,
                            right_.row_count(), work_);
    }

    // Where ids decide alone, and no two right rows have the same: the pairs.
    bool has_only_rows() const { return !only_rows_.empty(); }
    Result<MatchedPairs> pairs_of_only_rows(Unmatched unmatched)
    {
        // First each left row's match in the place of its id, and how many pairs come of each block.
        const std::int64_t rows = left_.row_count();
        std::vector<std::size_t> starts(
            static_cast<std::size_t>((rows + plain_rows_per_block - 1) / plain_rows_per_block));
        Status done = work_.for_blocks(
            rows, plain_rows_per_block, 0.5, [&](std::int64_t begin, std::int64_t end, unsigned) {
                std::size_t matched = 0;
                for (auto row = static_cast<std::size_t>(begin); row < static_cast<std::size_t>(end); ++row) {
                    const RowNumber match = ids_[row] == null_row ? null_row : only_rows_[ids_[row]];
                    matched += match != null_row ? 1 : 0;
                    ids_[row] = match;
                }
                starts[static_cast<std::size_t>(begin / plain_rows_per_block)] =
                    unmatched == Unmatched::BesideNull ? static_cast<std::size_t>(end - begin) : matched;
                return Status();
            });
        std::size_t count = 0;
        for (std::size_t &start : starts)
            count += std::exchange(start, count);
        if (done.ok())
            done = check_rows(count);
        if (!done.ok())
            return done;
        MatchedPairs pairs;
        pairs.left.resize(count);
        pairs.right.resize(count);
        done = work_.for_blocks(
            rows, plain_rows_per_block, 0.9, [&](std::int64_t begin, std::int64_t end, unsigned) {
                std::size_t at = starts[static_cast<std::size_t>(begin / plain_rows_per_block)];
                for (auto row = static_cast<std::size_t>(begin); row < static_cast<std::size_t>(end); ++row) {
                    if (ids_[row] == null_row && unmatched == Unmatched::LeftOut)
                        continue;
                    pairs.left[at] = static_cast<RowNumber>(row);
                    pairs.right[at++] = ids_[row];
                }
                return Status();
            });
        if (!done.ok())
            return done;
        return pairs;
    }

    // Where ids decide alone and it is enough to know whether a left row has a match: those that have none.
    bool has_id_set() const { return id_set_.has_value(); }
    Result<std::vector<BlockPairs>> rows_without_ids()
    {
        const std::int64_t rows = left_.row_count();
        std::vector<BlockPairs> blocks(
            static_cast<std::size_t>((rows + plain_rows_per_block - 1) / plain_rows_per_block));
        Status done = work_.for_blocks(
            rows, plain_rows_per_block, 0.9, [&](std::int64_t begin, std::int64_t end, unsigned) {
                RowNumbers found(static_cast<std::size_t>(end - begin));
                std::size_t count = 0;
                for (std::int64_t row = begin; row < end; ++row) {
                    found[count] = static_cast<RowNumber>(row);
                    count += id_set_->has(ids_[static_cast<std::size_t>(row)]) ? 0 : 1;
                }
                blocks[static_cast<std::size_t>(begin / plain_rows_per_block)].left.assign(
                    found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count));
                return Status();
            });
        if (!done.ok())
            return done;
        return blocks;
    }

    // Where ids and one interval decide, and few right rows have the same id: the pairs.
    bool has_small_buckets() const
    {
        return terms_.intervals.size() == 1 && !terms_.condition && index_.has_small_buckets();
    }
    Result<MatchedPairs> pairs_of_small_buckets(Unmatched unmatched)
    {
        // First which entries of its bucket each left row meets, and how many pairs come of each block.
        const std::int64_t rows = left_.row_count();
        Buffer<EntryBits> met(static_cast<std::size_t>(rows));
        std::vector<std::size_t> starts(
            static_cast<std::size_t>((rows + plain_rows_per_block - 1) / plain_rows_per_block));
        Status done = work_.for_blocks(
            rows, plain_rows_per_block, 0.5, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                Probe &probe = probe_of(thread);
                std::size_t &count = starts[static_cast<std::size_t>(begin / plain_rows_per_block)];
                for (std::int64_t at = begin; at < end; at += cached_rows) {
                    const std::int64_t last = std::min(end, at + cached_rows);
                    fill_intervals(probe, at, last);
                    count += meet_small_buckets(probe.intervals.front(), at, unmatched,
                                                &met[static_cast<std::size_t>(at)]);
                }
                return Status();
            });
        std::size_t count = 0;
        for (std::size_t &start : starts)
            count += std::exchange(start, count);
        if (done.ok())
            done = check_rows(count);
        if (!done.ok())
            return done;
        MatchedPairs pairs;
        pairs.left.resize(count);
        pairs.right.resize(count);
        done = work_.for_blocks(
            rows, plain_rows_per_block, 0.9, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                Probe &probe = probe_of(thread);
                auto place = static_cast<std::ptrdiff_t>(
                    starts[static_cast<std::size_t>(begin / plain_rows_per_block)]);
                for (std::int64_t at = begin; at < end; at += cached_rows) {
                    const std::int64_t last = std::min(end, at + cached_rows);
                    const auto found =
                        list_met(probe, at, last, unmatched, &met[static_cast<std::size_t>(at)]);
                    std::copy_n(probe.left.begin(), found, pairs.left.begin() + place);
                    std::copy_n(probe.right.begin(), found, pairs.right.begin() + place);
                    place += found;
                }
                return Status();
            });
        if (!done.ok())
            return done;
        return pairs;
    }

    // Runs over the left rows in blocks; `take` is given a row and its matches.
    template <typename Take>
    Result<std::vector<BlockPairs>> run(Take take)
    {
        const std::uint64_t candidates = count_candidates();
        // Where nothing else is asked for, that many rows it will be.
        if (terms_.intervals.empty() && !terms_.condition)
            if (Status fits = check_rows(candidates); !fits.ok())
                return fits;
        const std::int64_t block = rows_per_block(candidates);
        std::vector<BlockPairs> blocks(static_cast<std::size_t>((left_.row_count() + block - 1) / block));
        Status done = work_.for_blocks(
            left_.row_count(), block, 0.9, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                BlockPairs &out = blocks[static_cast<std::size_t>(begin / block)];
                Probe &probe = probe_of(thread);
                return terms_.condition ? with_condition(probe, begin, end, out, take)
                                        : without_condition(probe, begin, end, out, take);
            });
        if (!done.ok())
            return done;
        return blocks;
    }

private:
    // What one thread works with.
    struct Probe {
        std::vector<std::vector<Interval>> intervals; // of the block's rows, by term
        std::vector<RowNumber> found;
        // Candidates of several rows, to be tested together.
        RowNumbers left;
        RowNumbers right;
        std::unique_ptr<RowBatch> batch;
        std::unique_ptr<expr::ExpressionExecutor> executor;
        expr::SelectionVector positions;
        std::uint64_t pairs = 0;
    };

    // What is enough where ids decide alone; false where that is buckets.
    Result<bool> prepare_for_ids(const EqualIds &ids)
    {
        if (any_) {
            auto set = id_set(ids.right, ids.domain, work_);
            if (!set.ok())
                return set.status();
            id_set_ = std::move(*set);
            return true;
        }
        auto rows = only_rows(ids.right, ids.domain, work_);
        if (!rows.ok())
            return rows.status();
        only_rows_ = std::move(*rows);
        return has_only_rows();
    }

    // Calls `body` with the room of a bucket: where that is little as a constant, so that the loop over a
    // row's entries needs be none.
    template <typename Body>
    auto with_room(Body body) const
    {
        switch (const std::size_t room = index_.bucket_room()) {
        case 1:
            return body(std::integral_constant<std::size_t, 1>());
        case 2:
            return body(std::integral_constant<std::size_t, 2>());
        case 3:
            return body(std::integral_constant<std::size_t, 3>());
        case 4:
            return body(std::integral_constant<std::size_t, 4>());
        default:
            return body(room);
        }
    }

    // Which entries the rows from `first` on meet; answers the number of pairs that come of them.
    std::size_t meet_small_buckets(const std::vector<Interval> &sought, std::int64_t first,
                                   Unmatched unmatched, EntryBits *met) const
    {
        return with_room([&](auto room) {
            return terms_.intervals.front().left->has_points()
                       ? meet_buckets<true>(room, sought, first, unmatched, met)
                       : meet_buckets<false>(room, sought, first, unmatched, met);
        });
    }
    // The pairs of the rows [begin, end) into the probe; answers their number.
    std::ptrdiff_t list_met(Probe &probe, std::int64_t begin, std::int64_t end, Unmatched unmatched,
                            const EntryBits *met) const
    {
        return with_room([&](auto room) { return list_met(room, probe, begin, end, unmatched, met); });
    }

    // Without branches that depend on the data, as nobody can foresee them.
    template <bool points, typename Room>
    std::size_t meet_buckets(const Room room, const std::vector<Interval> &sought, std::int64_t first,
                             Unmatched unmatched, EntryBits *met) const
    {
        const Interval *const intervals = index_.padded_intervals();
        const RowNumber *const ids = &ids_[static_cast<std::size_t>(first)];
        const std::size_t at_least = unmatched == Unmatched::BesideNull ? 1 : 0;
        std::size_t count = 0;
        for (std::size_t i = 0; i < sought.size(); ++i) {
            const Interval own = sought[i];
            const Interval *const bucket = intervals + padded_bucket(ids[i]) * room;
            const unsigned some = own.low <= own.high ? 1 : 0;
            unsigned bits = 0;
            std::size_t found = 0;
            // An empty entry is met by nothing but what has no ends.
            const bool has_ends = points || own.low != open_interval.low || own.high != open_interval.high;
            const std::uint64_t high = points ? own.low : own.high;
            for (std::size_t entry = 0; entry < room; ++entry) {
                const Interval &other = bucket[entry];
                unsigned meets = static_cast<unsigned>(other.low <= high) &
                                 static_cast<unsigned>(own.low <= other.high) & some;
                if (!has_ends)
                    meets &= other.is_empty() ? 0 : 1;
                bits |= meets << entry;
                found += meets;
            }
            met[i] = static_cast<EntryBits>(bits);
            count += std::max(found, at_least);
        }
        return count;
    }

    // Rows without an id have the bucket behind the last one, which is empty.
    std::size_t padded_bucket(RowNumber id) const
    {
        return std::min<std::size_t>(id, buckets_.begins.size() - 1);
    }

    template <typename Room>
    std::ptrdiff_t list_met(const Room room, Probe &probe, std::int64_t begin, std::int64_t end,
                            Unmatched unmatched, const EntryBits *met) const
    {
        const RowNumber *const rows = index_.padded_rows();
        const auto most = static_cast<std::size_t>(end - begin) * room + 1;
        if (probe.left.size() < most) {
            probe.left.resize(most);
            probe.right.resize(most);
        }
        RowNumber *const left = probe.left.data();
        RowNumber *const right = probe.right.data();
        std::size_t count = 0;
        for (std::int64_t row = begin; row < end; ++row) {
            const unsigned bits = met[row - begin];
            const RowNumber *const bucket = rows + padded_bucket(ids_[static_cast<std::size_t>(row)]) * room;
            // Most rows meet one entry or none; whether it is one nobody can foresee.
            left[count] = static_cast<RowNumber>(row);
            right[count] = bucket[std::countr_zero(bits | 1u << (room - 1))];
            count += bits != 0 ? 1 : 0;
            for (unsigned rest = bits & (bits - 1); rest != 0; rest &= rest - 1) {
                left[count] = static_cast<RowNumber>(row);
                right[count++] = bucket[std::countr_zero(rest)];
            }
            if (unmatched == Unmatched::BesideNull && bits == 0) {
                left[count] = static_cast<RowNumber>(row);
                right[count++] = null_row;
            }
        }
        return static_cast<std::ptrdiff_t>(count);
    }

    static void leave_out(RowNumbers &ids, const std::vector<std::uint8_t> &out)
    {
        for (std::size_t row = 0; row < out.size(); ++row)
            if (out[row])
                ids[row] = null_row;
    }

    Probe &probe_of(unsigned thread)
    {
        auto &probe = probes_[thread];
        if (!probe) {
            probe = std::make_unique<Probe>();
            probe->intervals.resize(terms_.intervals.size());
            probe->batch = std::make_unique<RowBatch>(left_, right_);
            if (terms_.condition)
                probe->executor = std::make_unique<expr::ExpressionExecutor>(*terms_.condition, terms_.now);
        }
        return *probe;
    }

    // Pairs that agree in what has to be equal.
    std::uint64_t count_candidates() const
    {
        std::uint64_t candidates = 0;
        if (!any_ || terms_.condition)
            for (const RowNumber id : ids_)
                candidates += id == null_row ? 0 : buckets_.size(id);
        return candidates;
    }

    std::int64_t rows_per_block(std::uint64_t candidates) const
    {
        const std::int64_t rows = std::max<std::int64_t>(left_.row_count(), 1);
        const auto per_row = static_cast<std::int64_t>(candidates / static_cast<std::uint64_t>(rows)) + 1;
        return std::clamp<std::int64_t>(pairs_per_block / per_row, 1, max_rows_per_block);
    }

    void fill_intervals(Probe &probe, std::int64_t begin, std::int64_t end) const
    {
        for (std::size_t i = 0; i < terms_.intervals.size(); ++i) {
            probe.intervals[i].resize(static_cast<std::size_t>(end - begin));
            terms_.intervals[i].left->fill(begin, end, probe.intervals[i].data());
        }
    }

    // The right rows that all terms but the condition leave for a left row, which is the n-th of its block.
    void candidates(Probe &probe, std::int64_t row, std::size_t n) const
    {
        probe.found.clear();
        const RowNumber id = ids_[static_cast<std::size_t>(row)];
        if (id == null_row)
            return;
        if (terms_.intervals.empty()) {
            probe.found.insert(probe.found.end(), buckets_.rows.begin() + buckets_.begins[id],
                               buckets_.rows.begin() + buckets_.begins[id + 1]);
            return;
        }
        index_.find(id, probe.intervals[0][n], any_ && further_.empty() && !terms_.condition, probe.found);
        for (std::size_t i = 0; i < further_.size(); ++i) {
            const Interval &sought = probe.intervals[i + 1][n];
            std::erase_if(probe.found, [&](RowNumber other) {
                const Interval &interval = further_[i][other];
                return sought.is_empty() || interval.is_empty() || !interval.meets(sought);
            });
        }
    }

    template <typename Take>
    Status without_condition(Probe &probe, std::int64_t begin, std::int64_t end, BlockPairs &out, Take take)
    {
        fill_intervals(probe, begin, end);
        const bool whole_buckets = terms_.intervals.empty();
        for (std::int64_t row = begin; row < end && !work_.stopped(); ++row) {
            if (whole_buckets) {
                const RowNumber id = ids_[static_cast<std::size_t>(row)];
                const std::size_t size = id == null_row ? 0 : buckets_.size(id);
                take(out, static_cast<RowNumber>(row),
                     size == 0 ? nullptr : buckets_.rows.data() + buckets_.begins[id], size);
                continue;
            }
            candidates(probe, row, static_cast<std::size_t>(row - begin));
            take(out, static_cast<RowNumber>(row), probe.found.data(), probe.found.size());
        }
        return count(out.left.size());
    }

    // Candidates are gathered until they make a batch; what is left of them after the condition goes to
    // `take`.
    template <typename Take>
    Status with_condition(Probe &probe, std::int64_t begin, std::int64_t end, BlockPairs &out, Take take)
    {
        fill_intervals(probe, begin, end);
        BlockPairs holding;
        for (std::int64_t row = begin; row < end && !work_.stopped(); ++row) {
            candidates(probe, row, static_cast<std::size_t>(row - begin));
            for (const RowNumber other : probe.found) {
                probe.left.push_back(static_cast<RowNumber>(row));
                probe.right.push_back(other);
                if (probe.left.size() < batch_pairs)
                    continue;
                if (Status tested = test(probe, holding); !tested.ok())
                    return tested;
                if (work_.stopped())
                    break;
            }
        }
        if (Status tested = test(probe, holding); !tested.ok())
            return tested;
        std::size_t at = 0;
        for (std::int64_t row = begin; row < end && !work_.stopped(); ++row) {
            const std::size_t first = at;
            while (at < holding.left.size() && holding.left[at] == static_cast<RowNumber>(row))
                ++at;
            take(out, static_cast<RowNumber>(row), holding.right.data() + first, at - first);
        }
        return count(out.left.size());
    }

    Status test(Probe &probe, BlockPairs &holding)
    {
        if (probe.left.empty())
            return Status();
        probe.batch->set_rows(probe.left.data(), probe.right.data(), probe.left.size());
        Status tested = probe.executor->select_all(*probe.batch, probe.positions);
        if (tested.ok())
            for (const std::uint32_t position : probe.positions) {
                holding.left.push_back(probe.left[position]);
                holding.right.push_back(probe.right[position]);
            }
        probe.left.clear();
        probe.right.clear();
        return tested;
    }

    // Counts pairs that were made, and sees to it that they don't take more memory than there is.
    Status count(std::size_t made)
    {
        const std::uint64_t before = pairs_.fetch_add(made);
        const std::uint64_t now = before + made;
        if (before / pairs_between_memory_checks == now / pairs_between_memory_checks)
            return Status();
        return check_rows(now);
    }

    static Status check_rows(std::uint64_t rows)
    {
        if (rows >= static_cast<std::uint64_t>(max_view_rows))
            return Status(Code::Memory, concat("out of memory: the join has at least ", rows,
                                               " rows; a view has less than ", max_view_rows));
        // The pairs are put together once more, and each member's records beside them.
        return check_memory(16.0 * static_cast<double>(rows),
                            concat("the join has at least ", rows, " rows"));
    }

    const Operand &left_;
    const Operand &right_;
    const MatchTerms &terms_;
    const bool any_;
    Work &work_;
    RowNumbers ids_; // of the left rows
    RowNumbers only_rows_;
    std::optional<IdSet> id_set_;
    RowBuckets buckets_;
    IntervalIndex index_; // of the first pair of intervals
    std::vector<std::vector<Interval>> further_;
    std::vector<std::unique_ptr<Probe>> probes_;
    std::atomic<std::uint64_t> pairs_ = 0;
};

// Puts one side of the blocks together, letting go of them on the way.
Result<RowNumbers> joined(std::vector<BlockPairs> &blocks, RowNumbers BlockPairs::*side, Work &work)
{
    std::vector<std::size_t> starts;
    std::size_t count = 0;
    for (const BlockPairs &block : blocks) {
        starts.push_back(count);
        count += (block.*side).size();
    }
    RowNumbers all(count);
    Status done = work.for_blocks(
        static_cast<std::int64_t>(blocks.size()), 1, 0.5, [&](std::int64_t at, std::int64_t, unsigned) {
            RowNumbers &block = blocks[static_cast<std::size_t>(at)].*side;
            std::copy(block.begin(), block.end(),
                      all.begin() + static_cast<std::ptrdiff_t>(starts[static_cast<std::size_t>(at)]));
            RowNumbers().swap(block);
            return Status();
        });
    if (!done.ok())
        return done;
    return all;
}

Result<MatchedPairs> joined_pairs(Result<std::vector<BlockPairs>> blocks, Work &work)
{
    if (!blocks.ok())
        return blocks.status();
    auto left = joined(*blocks, &BlockPairs::left, work);
    if (!left.ok())
        return left.status();
    auto right = joined(*blocks, &BlockPairs::right, work);
    if (!right.ok())
        return right.status();
    return MatchedPairs{std::move(*left), std::move(*right)};
}

} // namespace

Result<MatchedPairs> matched_pairs(const Operand &left, const Operand &right, const MatchTerms &terms,
                                   Unmatched unmatched, Work &work)
{
    Matching matching(left, right, terms, false, work);
    if (Status prepared = matching.prepare(); !prepared.ok())
        return prepared;
    if (matching.has_only_rows())
        return matching.pairs_of_only_rows(unmatched);
    if (matching.has_small_buckets())
        return matching.pairs_of_small_buckets(unmatched);
    return joined_pairs(
        matching.run([&](BlockPairs &out, RowNumber row, const RowNumber *matches, std::size_t count) {
            if (count == 0 && unmatched == Unmatched::BesideNull) {
                out.left.push_back(row);
                out.right.push_back(null_row);
            }
            out.left.insert(out.left.end(), count, row);
            out.right.insert(out.right.end(), matches, matches + count);
        }),
        work);
}

Result<RowNumbers> unmatched_rows(const Operand &left, const Operand &right, const MatchTerms &terms,
                                  Work &work)
{
    Matching matching(left, right, terms, true, work);
    if (Status prepared = matching.prepare(); !prepared.ok())
        return prepared;
    auto blocks =
        matching.has_id_set()
            ? matching.rows_without_ids()
            : matching.run([](BlockPairs &out, RowNumber row, const RowNumber *, std::size_t count) {
                  if (count == 0)
                      out.left.push_back(row);
              });
    if (!blocks.ok())
        return blocks.status();
    return joined(*blocks, &BlockPairs::left, work);
}

} // namespace orvane
