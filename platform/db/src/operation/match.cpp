#include "operation/match.h"

#include "base/concat.h"
#include "operation/row_batch.h"

#include <algorithm>
#include <atomic>
#include <numeric>

namespace orvane {

namespace {

constexpr std::size_t batch_pairs = expr::ExpressionExecutor::batch_size;
constexpr std::int64_t pairs_per_block = 256 << 10; // about so many candidates between two looks at the hook
constexpr std::int64_t max_rows_per_block = 32 << 10;
constexpr std::uint64_t pairs_between_memory_checks = 32 << 20;

// The right rows by id.
struct Buckets {
    RowNumbers begins; // per id, and behind the last one the end
    RowNumbers rows;   // ascending within each bucket

    std::size_t size(RowNumber id) const { return begins[id + 1] - begins[id]; }
};

Result<Buckets> buckets_of(const RowNumbers &ids, std::uint32_t domain, Work &work)
{
    constexpr std::size_t between_polls = 1 << 20;
    Buckets buckets;
    buckets.begins.assign(std::size_t{domain} + 2, 0);
    for (std::size_t row = 0; row < ids.size(); ++row) {
        if (row % between_polls == 0)
            if (Status told = work.poll(); !told.ok())
                return told;
        if (ids[row] != null_row)
            ++buckets.begins[ids[row] + 2];
    }
    std::partial_sum(buckets.begins.begin(), buckets.begins.end(), buckets.begins.begin());
    buckets.rows.resize(buckets.begins.back());
    for (std::size_t row = 0; row < ids.size(); ++row) {
        if (row % between_polls == 0)
            if (Status told = work.poll(); !told.ok())
                return told;
        if (ids[row] != null_row)
            buckets.rows[buckets.begins[ids[row] + 1]++] = static_cast<RowNumber>(row);
    }
    buckets.begins.pop_back();
    return buckets;
}

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
        auto buckets = buckets_of(ids->right, ids->domain, work_);
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
    static void leave_out(RowNumbers &ids, const std::vector<std::uint8_t> &out)
    {
        for (std::size_t row = 0; row < out.size(); ++row)
            if (out[row])
                ids[row] = null_row;
    }

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
    Buckets buckets_;
    IntervalIndex index_; // of the first pair of intervals
    std::vector<std::vector<Interval>> further_;
    std::vector<std::unique_ptr<Probe>> probes_;
    std::atomic<std::uint64_t> pairs_ = 0;
};

// Puts one side of the blocks together, letting go of them on the way.
RowNumbers joined(std::vector<BlockPairs> &blocks, RowNumbers BlockPairs::*side)
{
    std::size_t count = 0;
    for (const BlockPairs &block : blocks)
        count += (block.*side).size();
    RowNumbers all(count);
    auto out = all.begin();
    for (BlockPairs &block : blocks) {
        out = std::copy((block.*side).begin(), (block.*side).end(), out);
        RowNumbers().swap(block.*side);
    }
    return all;
}

} // namespace

Result<MatchedPairs> matched_pairs(const Operand &left, const Operand &right, const MatchTerms &terms,
                                   Unmatched unmatched, Work &work)
{
    Matching matching(left, right, terms, false, work);
    if (Status prepared = matching.prepare(); !prepared.ok())
        return prepared;
    auto blocks =
        matching.run([&](BlockPairs &out, RowNumber row, const RowNumber *matches, std::size_t count) {
            if (count == 0 && unmatched == Unmatched::BesideNull) {
                out.left.push_back(row);
                out.right.push_back(null_row);
            }
            out.left.insert(out.left.end(), count, row);
            out.right.insert(out.right.end(), matches, matches + count);
        });
    if (!blocks.ok())
        return blocks.status();
    MatchedPairs pairs;
    pairs.left = joined(*blocks, &BlockPairs::left);
    pairs.right = joined(*blocks, &BlockPairs::right);
    return pairs;
}

Result<RowNumbers> unmatched_rows(const Operand &left, const Operand &right, const MatchTerms &terms,
                                  Work &work)
{
    Matching matching(left, right, terms, true, work);
    if (Status prepared = matching.prepare(); !prepared.ok())
        return prepared;
    auto blocks = matching.run([](BlockPairs &out, RowNumber row, const RowNumber *, std::size_t count) {
        if (count == 0)
            out.left.push_back(row);
    });
    if (!blocks.ok())
        return blocks.status();
    return joined(*blocks, &BlockPairs::left);
}

} // namespace orvane
