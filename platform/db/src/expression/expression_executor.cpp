#include "expression/expression_executor.h"

#include <orvane/util.h>

#include "expression/evaluation.h"

namespace orvane::expr {

ExpressionExecutor::ExpressionExecutor(BoundExpression expression, std::optional<double> now)
    : expression_(std::move(expression)), evaluation_(std::make_unique<Evaluation>(now ? *now : std_now()))
{
}

ExpressionExecutor::~ExpressionExecutor() = default;
ExpressionExecutor::ExpressionExecutor(ExpressionExecutor &&) noexcept = default;
ExpressionExecutor &ExpressionExecutor::operator=(ExpressionExecutor &&) noexcept = default;

Status ExpressionExecutor::select(ColumnBatch &batch, SelectionVector &positions)
{
    if (!is_condition(*expression_.root()))
        return Status(Code::Argument, "the expression is no condition");
    SelectionVector holding;
    Status status = evaluation_->select(*expression_.root(), batch, selection_of(positions), holding);
    if (status.ok())
        positions.swap(holding);
    return status;
}

Status ExpressionExecutor::select_all(ColumnBatch &batch, SelectionVector &positions)
{
    if (!is_condition(*expression_.root()))
        return Status(Code::Argument, "the expression is no condition");
    SelectionVector holding;
    Status status = evaluation_->select(*expression_.root(), batch, first_positions(batch.size()), holding);
    if (status.ok())
        positions.swap(holding);
    return status;
}

Result<Value> ExpressionExecutor::value(ColumnBatch &batch, std::size_t position)
{
    const SelectionVector positions{static_cast<std::uint32_t>(position)};
    std::vector<Value> values;
    if (Status status = evaluation_->values(*expression_.root(), batch, selection_of(positions), values);
        !status.ok())
        return status;
    return std::move(values.front());
}

Status ExpressionExecutor::values(ColumnBatch &batch, std::vector<Value> &out)
{
    return evaluation_->values(*expression_.root(), batch, first_positions(batch.size()), out);
}

} // namespace orvane::expr
