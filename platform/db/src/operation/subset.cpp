#include "operation/subset.h"

#include "operation/row_batch.h"

#include <orvane/util.h>

#include <algorithm>
#include <memory>

namespace orvane {

namespace {

constexpr auto batch_rows = static_cast<std::int64_t>(expr::ExpressionExecutor::batch_size);
constexpr std::int64_t rows_per_block = 32 * batch_rows;

std::vector<int> columns_of(const expr::BoundExpression &expression)
{
    const auto columns = expression.columns();
    return {columns.begin(), columns.end()};
}

// What one thread tests rows with.
struct Tester {
    Tester(const Operand &operand, const expr::BoundExpression &condition, double now)
        : batch(operand), executor(condition, now)
    {
    }
    RowBatch batch;
    expr::ExpressionExecutor executor;
    expr::SelectionVector positions;

    // The rows of [begin, end) for which the condition is true go behind those in `found`.
    Status test(std::int64_t begin, std::int64_t end, RowNumbers &found)
    {
        for (std::int64_t at = begin; at < end; at += batch_rows) {
            batch.set_range(at, static_cast<std::size_t>(std::min(batch_rows, end - at)));
            if (Status selected = executor.select_all(batch, positions); !selected.ok())
                return selected;
            for (const std::uint32_t position : positions)
                found.push_back(static_cast<RowNumber>(at) + position);
        }
        return Status();
    }
};

class Testers
{
public:
    Testers(const Operand &operand, const expr::BoundExpression &condition)
        : operand_(operand), condition_(condition), now_(std_now()), testers_(thread_limit())
    {
    }
    Tester &of_thread(unsigned thread)
    {
        auto &tester = testers_[thread];
        if (!tester)
            tester = std::make_unique<Tester>(operand_, condition_, now_);
        return *tester;
    }

private:
    const Operand &operand_;
    const expr::BoundExpression &condition_;
    const double now_; // the same for all rows
    std::vector<std::unique_ptr<Tester>> testers_;
};

RowNumbers joined(const std::vector<RowNumbers> &parts)
{
    std::size_t count = 0;
    for (const RowNumbers &part : parts)
        count += part.size();
    RowNumbers all(count);
    auto out = all.begin();
    for (const RowNumbers &part : parts)
        out = std::copy(part.begin(), part.end(), out);
    return all;
}

} // namespace

Result<expr::BoundExpression> bind_condition(const Table &table, int standing_on, std::string_view text)
{
    const auto parsed = expr::ParsedExpression::parse(text);
    if (!parsed.ok())
        return parsed.status();
    return expr::BoundExpression::bind_condition(*parsed, scope_of(table, standing_on));
}

Result<RowNumbers> subset_rows(Operand &operand, const expr::BoundExpression &condition, Work &work)
{
    if (Status loaded = operand.load(columns_of(condition), work); !loaded.ok())
        return loaded;
    Testers testers(operand, condition);
    std::vector<RowNumbers> found(
        static_cast<std::size_t>((operand.row_count() + rows_per_block - 1) / rows_per_block));
    Status done = work.for_blocks(
        operand.row_count(), rows_per_block, 0.7, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
            return testers.of_thread(thread).test(begin, end,
                                                  found[static_cast<std::size_t>(begin / rows_per_block)]);
        });
    if (!done.ok())
        return done;
    return joined(found);
}

Result<std::int64_t> find_row(Operand &operand, const expr::BoundExpression &condition, std::int64_t from,
                              bool backwards, Work &work)
{
    if (Status loaded = operand.load(columns_of(condition), work); !loaded.ok())
        return loaded;
    const std::int64_t count = operand.row_count();
    Testers testers(operand, condition);
    // Blocks are tested some at a time, so that a row that is near is found at once.
    std::int64_t begin = backwards ? 0 : std::clamp<std::int64_t>(from + 1, 0, count);
    std::int64_t end = backwards && from >= 0 ? std::min(from, count) : count;
    std::int64_t stretch = rows_per_block / 8;
    while (begin < end) {
        const std::int64_t first = backwards ? std::max(begin, end - stretch) : begin;
        const std::int64_t last = backwards ? end : std::min(end, begin + stretch);
        std::vector<RowNumbers> found(static_cast<std::size_t>((last - first) / rows_per_block + 1));
        Status done = work.for_blocks(last - first, rows_per_block, 0.1,
                                      [&](std::int64_t from_row, std::int64_t to_row, unsigned thread) {
                                          return testers.of_thread(thread).test(
                                              first + from_row, first + to_row,
                                              found[static_cast<std::size_t>(from_row / rows_per_block)]);
                                      });
        if (!done.ok())
            return done;
        if (const RowNumbers rows = joined(found); !rows.empty())
            return static_cast<std::int64_t>(backwards ? rows.back() : rows.front());
        (backwards ? end : begin) = backwards ? first : last;
        stretch = std::min<std::int64_t>(stretch * 2, 64 * rows_per_block);
    }
    return std::int64_t{-1};
}

} // namespace orvane
