#include "operation/theta.h"

#include "expression/parsed_expression.h"
#include "operation/row_batch.h"
#include "table/field_value.h"

#include <orvane/util.h>

#include <algorithm>
#include <limits>
#include <mutex>

namespace orvane {

namespace {

using expr::BoundNode;
using expr::BoundNodePtr;
using expr::Operator;

constexpr auto batch_rows = static_cast<std::int64_t>(expr::ExpressionExecutor::batch_size);
constexpr std::int64_t rows_per_block = 8 * batch_rows;

// On which operands a node depends.
enum Sides : unsigned { NoSide = 0, LeftSide = 1, RightSide = 2, BothSides = 3 };

unsigned sides_of(const BoundNode &node, std::size_t left_fields)
{
    unsigned sides =
        node.kind == BoundNode::Kind::Field ? (node.column < left_fields ? LeftSide : RightSide) : NoSide;
    for (const BoundNodePtr &child : node.children)
        sides |= sides_of(*child, left_fields);
    return sides;
}

// An ordering between a value of the left side and one of the right: left op right.
struct Ordering {
    BoundNodePtr left;
    BoundNodePtr right;
    Operator op;
};

bool same_value(const BoundNodePtr &a, const BoundNodePtr &b)
{
    return a == b ||
           (a->kind == BoundNode::Kind::Field && b->kind == BoundNode::Kind::Field && a->column == b->column);
}

bool bounds_from_below(Operator op) // left is a lower bound of right
{
    return op == Operator::Less || op == Operator::LessEqual;
}

bool is_strict(Operator op)
{
    return op == Operator::Less || op == Operator::Greater;
}

class ThetaTerms
{
public:
    ThetaTerms(Operand &left, Operand &right, Work &work)
        : left_(left), right_(right), left_fields_(left.table().fields().size()), work_(work), now_(std_now())
    {
        terms_.now = now_;
    }

    Result<MatchTerms> make(const expr::BoundExpression &condition)
    {
        if (Status loaded = load(condition); !loaded.ok())
            return loaded;
        const BoundNodePtr &root = condition.root();
        const std::vector<BoundNodePtr> whole{root};
        const auto &parts = root->kind == BoundNode::Kind::And ? root->children : whole;
        for (const BoundNodePtr &part : parts)
            if (Status sorted = take(part); !sorted.ok())
                return sorted;
        while (!orderings_.empty())
            if (Status done = take_group(); !done.ok())
                return done;
        keep_rest();
        return std::move(terms_);
    }

private:
    Status load(const expr::BoundExpression &condition)
    {
        std::vector<int> of_left, of_right;
        for (const std::size_t column : condition.columns())
            if (column < left_fields_)
                of_left.push_back(static_cast<int>(column));
            else
                of_right.push_back(static_cast<int>(column - left_fields_));
        Status loaded = left_.load(of_left, work_);
        return loaded.ok() ? right_.load(of_right, work_) : loaded;
    }

    Status take(const BoundNodePtr &part)
    {
        switch (sides_of(*part, left_fields_)) {
        case LeftSide:
            return leave_out(part, left_, terms_.left_out);
        case RightSide:
            return leave_out(part, right_, terms_.right_out);
        case BothSides:
            return take_comparison(part);
        default: // true or false of all pairs; now() is the same for all
            return leave_out(part, left_, terms_.left_out);
        }
    }

    // Notes the rows of one side of which the part is not true.
    Status leave_out(const BoundNodePtr &part, const Operand &side, std::vector<std::uint8_t> &out)
    {
        out.resize(static_cast<std::size_t>(side.row_count()), 0);
        return for_batches(side, part,
                           [&](std::int64_t begin, RowBatch &batch, expr::ExpressionExecutor &executor) {
                               expr::SelectionVector holding;
                               if (Status selected = executor.select_all(batch, holding); !selected.ok())
                                   return selected;
                               auto next = holding.begin();
                               for (std::uint32_t i = 0; i < batch.size(); ++i) {
                                   if (next != holding.end() && *next == i)
                                       ++next;
                                   else
                                       out[static_cast<std::size_t>(begin) + i] = 1;
                               }
                               return Status();
                           });
    }

    Status take_comparison(const BoundNodePtr &part)
    {
        if (!part->comparison || (part->day_span ? part->op == Operator::Equal : part->children.size() != 2))
            return keep(part);
        BoundNodePtr left = part->children[0];
        BoundNodePtr right = part->children[1];
        Operator op = part->op;
        if (part->day_span && !at_end_of_day(part->children, op, right))
            return keep(part);
        if (sides_of(*left, left_fields_) == RightSide && sides_of(*right, left_fields_) == LeftSide) {
            std::swap(left, right);
            op = expr::mirrored(op);
        }
        if (sides_of(*left, left_fields_) != LeftSide || sides_of(*right, left_fields_) != RightSide)
            return keep(part);
        const bool text = expr::storage_of(left->type) == expr::Storage::Text;
        if (op == Operator::Equal && text == (expr::storage_of(right->type) == expr::Storage::Text))
            return take_equality(left, right);
        if (expr::is_ordering(op) && !text && expr::storage_of(left->type) == expr::storage_of(right->type)) {
            orderings_.push_back(Ordering{left, right, op});
            return Status();
        }
        return keep(part);
    }

    // A time and a day are compared with the day's begin or its end: from the begin on, or before the end,
    // the time is on the day. False for what is no ordering.
    static bool at_end_of_day(const std::vector<BoundNodePtr> &time_begin_end, Operator &op,
                              BoundNodePtr &bound)
    {
        switch (op) {
        case Operator::Less:
        case Operator::GreaterEqual:
            bound = time_begin_end[1];
            return true;
        case Operator::LessEqual:
            op = Operator::Less;
            bound = time_begin_end[2];
            return true;
        case Operator::Greater:
            op = Operator::GreaterEqual;
            bound = time_begin_end[2];
            return true;
        default:
            return false;
        }
    }

    Status take_equality(const BoundNodePtr &left, const BoundNodePtr &right)
    {
        EqualValues equal;
        equal.nulls_join = true;
        if (Status found = values(left, left_, Nulls::AreValues, equal.left); !found.ok())
            return found;
        if (Status found = values(right, right_, Nulls::AreValues, equal.right); !found.ok())
            return found;
        terms_.equal.push_back(std::move(equal));
        return Status();
    }

    Status keep(const BoundNodePtr &part)
    {
        rest_.push_back(part);
        return Status();
    }

    // ---- Orderings ----

    // The orderings with one common side, of all such groups the one with most: its other sides bound an
    // interval in which the common value has to lie.
    Status take_group()
    {
        std::vector<std::size_t> best;
        bool best_on_right = true;
        for (std::size_t i = 0; i < orderings_.size(); ++i)
            for (const bool on_right : {true, false}) {
                const auto group = group_of(i, on_right);
                if (weight(group) > weight(best)) {
                    best = group;
                    best_on_right = on_right;
                }
            }
        std::vector<IntervalBound> bounds;
        for (const std::size_t i : best)
            if (Status added = add_bound(orderings_[i], best_on_right, bounds); !added.ok())
                return added;
        const Ordering &first = orderings_[best.front()];
        std::vector<IntervalBound> point(1);
        point[0].kind = IntervalBound::Kind::Point;
        Status found = best_on_right ? values(first.right, right_, Nulls::AreMissing, point[0].values)
                                     : values(first.left, left_, Nulls::AreMissing, point[0].values);
        if (!found.ok())
            return found;
        auto of_bounds = bounded_intervals(std::move(bounds));
        auto of_point = bounded_intervals(std::move(point));
        MeetingIntervals meeting;
        meeting.left = std::move(best_on_right ? of_bounds : of_point);
        meeting.right = std::move(best_on_right ? of_point : of_bounds);
        terms_.intervals.push_back(std::move(meeting));
        for (std::size_t i = best.size(); i-- > 0;)
            orderings_.erase(orderings_.begin() + static_cast<std::ptrdiff_t>(best[i]));
        return Status();
    }

    std::vector<std::size_t> group_of(std::size_t first, bool on_right) const
    {
        std::vector<std::size_t> group;
        const auto &common = on_right ? orderings_[first].right : orderings_[first].left;
        for (std::size_t i = 0; i < orderings_.size(); ++i)
            if (same_value(on_right ? orderings_[i].right : orderings_[i].left, common))
                group.push_back(i);
        return group;
    }

    // Bounds from both sides are worth most.
    std::size_t weight(const std::vector<std::size_t> &group) const
    {
        const auto below = static_cast<std::size_t>(std::count_if(
            group.begin(), group.end(), [&](std::size_t i) { return bounds_from_below(orderings_[i].op); }));
        const bool both = below > 0 && below < group.size();
        return group.size() + (both ? orderings_.size() : 0);
    }

    Status add_bound(const Ordering &ordering, bool common_is_right, std::vector<IntervalBound> &bounds)
    {
        using Kind = IntervalBound::Kind;
        IntervalBound bound;
        // Seen from the common value: is the other one below it?
        const bool is_low = bounds_from_below(ordering.op) == common_is_right;
        bound.kind = is_strict(ordering.op) ? (is_low ? Kind::AboveLow : Kind::BelowHigh)
                                            : (is_low ? Kind::Low : Kind::High);
        Status found = common_is_right ? values(ordering.left, left_, Nulls::AreMissing, bound.values)
                                       : values(ordering.right, right_, Nulls::AreMissing, bound.values);
        if (found.ok())
            bounds.push_back(std::move(bound));
        return found;
    }

    // ---- Values ----

    // Equalities compare what is stored, orderings leave it out. (Of fields the column knows its null.)
    enum class Nulls { AreValues, AreMissing };

    Status values(const BoundNodePtr &node, const Operand &side, Nulls nulls, SideValues &out)
    {
        if (node->kind == BoundNode::Kind::Field) {
            const bool is_left = &side == &left_;
            out.column = side.column(static_cast<int>(is_left ? node->column : node->column - left_fields_));
            return Status();
        }
        return computed(node, side, nulls, out);
    }

    static Attribute attribute_of(expr::ValueType type)
    {
        Attribute attribute;
        switch (expr::storage_of(type)) {
        case expr::Storage::Integer:
            attribute.type = FieldType::Integer;
            break;
        case expr::Storage::Real:
            attribute.type = FieldType::Real;
            break;
        case expr::Storage::Text:
            attribute.type = FieldType::String;
            break;
        }
        return attribute;
    }

    Status computed(const BoundNodePtr &node, const Operand &side, Nulls nulls, SideValues &out)
    {
        const auto count = static_cast<std::size_t>(side.row_count());
        auto column = new_column(attribute_of(node->type), side.row_count());
        auto missing = std::make_shared<std::vector<std::uint8_t>>(count, 0);
        // No value is the column's null.
        column->null_integer = std::numeric_limits<std::int64_t>::min();
        column->null_real = std::numeric_limits<double>::quiet_NaN();
        auto texts = std::make_shared<TextEntries>();
        std::mutex mutex;
        Status done = for_batches(
            side, node, [&](std::int64_t begin, RowBatch &batch, expr::ExpressionExecutor &executor) {
                std::vector<expr::Value> batch_values;
                if (Status worked = executor.values(batch, batch_values); !worked.ok())
                    return worked;
                for (std::size_t i = 0; i < batch_values.size(); ++i) {
                    const expr::Value &value = batch_values[i];
                    const std::size_t row = static_cast<std::size_t>(begin) + i;
                    (*missing)[row] = value.presence == expr::Missing ||
                                      (nulls == Nulls::AreMissing && value.presence == expr::StoredNull);
                    if (column->storage() == ColumnStorage::Integer) {
                        column->integers[row] = value.integer;
                    } else if (column->storage() == ColumnStorage::Real) {
                        column->reals[row] = value.real;
                    } else {
                        const std::lock_guard lock(mutex);
                        // Codes are compared, and blanks at the end of a text don't count.
                        column->codes[row] = texts->code_of(trimmed_right(value.text));
                    }
                }
                return Status();
            });
        if (column->storage() == ColumnStorage::Text) {
            column->null_code = texts->code_of("");
            column->codes.back() = column->null_code;
            column->texts = std::move(texts);
        }
        out.column = RowColumn{column.get(), nullptr, false};
        out.computed = std::move(column);
        out.missing = std::move(missing);
        return done;
    }

    // Runs over one side's rows in batches, with an expression of that side.
    template <typename Body>
    Status for_batches(const Operand &side, const BoundNodePtr &node, Body body)
    {
        const expr::BoundExpression expression(node);
        return work_.for_blocks(
            side.row_count(), rows_per_block, 0.2, [&](std::int64_t begin, std::int64_t end, unsigned) {
                RowBatch batch(left_, right_);
                expr::ExpressionExecutor executor(expression, now_);
                for (std::int64_t at = begin; at < end; at += batch_rows) {
                    batch.set_range(at, static_cast<std::size_t>(std::min(batch_rows, end - at)));
                    if (Status done = body(at, batch, executor); !done.ok())
                        return done;
                }
                return Status();
            });
    }

    // What can only be tried on pairs.
    void keep_rest()
    {
        if (rest_.empty())
            return;
        if (rest_.size() == 1) {
            terms_.condition.emplace(rest_.front());
            return;
        }
        auto all = std::make_shared<BoundNode>();
        all->kind = BoundNode::Kind::And;
        all->type = expr::ValueType::Boolean;
        all->dependence = BoundNode::Dependence::Other;
        all->children = rest_;
        terms_.condition.emplace(std::move(all));
    }

    Operand &left_;
    Operand &right_;
    const std::size_t left_fields_;
    Work &work_;
    const double now_;
    MatchTerms terms_;
    std::vector<Ordering> orderings_;
    std::vector<BoundNodePtr> rest_;
};

} // namespace

Result<MatchTerms> theta_terms(Operand &left, Operand &right, const expr::BoundExpression &condition,
                               Work &work)
{
    return ThetaTerms(left, right, work).make(condition);
}

} // namespace orvane
