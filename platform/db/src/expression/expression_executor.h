// Runs a bound expression over batches of rows.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "expression/bound_expression.h"
#include "expression/column_batch.h"

namespace orvane::expr {

class Evaluation;

// One thread at a time. Conjunctions test again only what is left of the rows, and what depends on one text
// column alone is worked out once per distinct text. Memory is bounded by the batch, the expression's height
// and the dictionaries.
class ExpressionExecutor
{
public:
    // Batches of this many rows are a good compromise of calls and cache.
    static constexpr std::size_t batch_size = 2048;

    // `now` is what now() answers for all rows; the present time unless given.
    explicit ExpressionExecutor(BoundExpression expression, std::optional<double> now = std::nullopt);
    ~ExpressionExecutor();
    ExpressionExecutor(ExpressionExecutor &&) noexcept;
    ExpressionExecutor &operator=(ExpressionExecutor &&) noexcept;

    const BoundExpression &expression() const { return expression_; }

    // Keeps those of the positions at which the expression, a condition, is true. Fails as the batch's
    // columns do, or when computed texts need too much memory; `positions` is then as it was.
    Status select(ColumnBatch &batch, SelectionVector &positions);
    // The same, from all positions of the batch.
    Status select_all(ColumnBatch &batch, SelectionVector &positions);

    // The expression's value at one position.
    Result<Value> value(ColumnBatch &batch, std::size_t position);

    // The values at all positions of the batch, appended.
    Status values(ColumnBatch &batch, std::vector<Value> &out);

private:
    BoundExpression expression_;
    std::unique_ptr<Evaluation> evaluation_;
};

} // namespace orvane::expr
