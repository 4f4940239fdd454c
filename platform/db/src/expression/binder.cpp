#include "expression/binder.h"

#include <algorithm>

#include "base/concat.h"
#include "base/near_names.h"
#include "expression/arithmetic_kernels.h"
#include "expression/comparison_tests.h"
#include "expression/conversion_kernels.h"
#include "expression/number_text.h"
#include "expression/pattern.h"
#include "expression/written_span.h"

namespace orvane::expr {

namespace {

using Kind = BoundNode::Kind;

constexpr std::size_t max_patterns = 256; // each may take some hundred kilobytes once it is compiled

bool holds_integers(const BoundNode &node)
{
    return storage_of(node.type) == Storage::Integer;
}

} // namespace

BoundNodePtr Binder::fail(std::string reason, Place place)
{
    if (!error_)
        error_ = ExpressionError{std::move(reason), place};
    return nullptr;
}

// "`depth`, a real number" for messages.
std::string Binder::shown(const BoundNode &node) const
{
    return concat(quoted(text_.substr(node.place.offset, node.place.length)), " is ", described(node.type));
}

BoundNodePtr Binder::value(const ParsedNode &parsed)
{
    switch (parsed.kind) {
    case ParsedNode::Kind::Integer:
        return make_.integer(parsed.integer, parsed.extent);
    case ParsedNode::Kind::Real:
        return make_.real(parsed.real, parsed.extent);
    case ParsedNode::Kind::Text:
        return make_.text(parsed.text, parsed.extent);
    case ParsedNode::Kind::Name:
        return name(parsed);
    case ParsedNode::Kind::Unary:
        return unary(parsed);
    case ParsedNode::Kind::Binary:
        return binary(parsed);
    case ParsedNode::Kind::Logical:
        return logical(parsed);
    case ParsedNode::Kind::Conditional:
        return conditional(parsed);
    case ParsedNode::Kind::Call:
        return call(parsed);
    }
    return nullptr;
}

BoundNodePtr Binder::condition(const ParsedNode &parsed)
{
    BoundNodePtr bound = value(parsed);
    return bound ? as_condition(std::move(bound)) : nullptr;
}

BoundNodePtr Binder::as_condition(BoundNodePtr bound)
{
    if (is_condition(*bound))
        return bound;
    if (!is_number(bound->type))
        return fail(concat("expected a condition, as a comparison; ", shown(*bound)), bound->place);
    const TestKernel test = truth(storage_of(bound->type));
    const Place place = bound->place;
    return make_.test(test, {std::move(bound)}, place);
}

// ---- Names -----------------------------------------------------------------------------------------------

BoundNodePtr Binder::name(const ParsedNode &parsed)
{
    const auto column = scope_.find(parsed.table, parsed.text);
    if (!column)
        return unknown_name(parsed);
    const ScopeField &field = scope_.field(*column);
    if (field.type == ValueType::Rows)
        return fail(concat(quoted(parsed.text), " holds rows of another view; an expression can't use it"),
                    parsed.place);
    return make_.field(*column, field.type, parsed.extent);
}

BoundNodePtr Binder::unknown_name(const ParsedNode &parsed)
{
    std::vector<std::string> names;
    bool table_known = false;
    for (std::size_t column = 0; column < scope_.field_count(); ++column) {
        const ScopeField &field = scope_.field(column);
        table_known = table_known || field.table == parsed.table;
        names.push_back(parsed.table.empty() ? field.name : concat(field.table, '.', field.name));
    }
    if (parsed.table.empty() && !functions_named(parsed.text).empty())
        return fail(concat("no field ", quoted(parsed.text), "; the function is written ",
                           functions_named(parsed.text).front().signature),
                    parsed.place);
    const std::string written = parsed.table.empty() ? parsed.text : concat(parsed.table, '.', parsed.text);
    std::vector<std::string_view> known;
    for (const std::string &candidate : names)
        if (known.empty() || std::find(known.begin(), known.end(), candidate) == known.end())
            known.push_back(candidate);
    std::string reason = concat("unknown field ", quoted(written), near_names_hint(written, known));
    if (!parsed.table.empty() && !table_known)
        reason = concat("no table ", quoted(parsed.table), " here: ", reason);
    return fail(std::move(reason), parsed.place);
}

// ---- Operators -------------------------------------------------------------------------------------------

BoundNodePtr Binder::unary(const ParsedNode &parsed)
{
    if (parsed.op == Operator::Not) {
        BoundNodePtr operand = condition(*parsed.children[0]);
        return operand ? make_.logical(Kind::Not, {std::move(operand)}, parsed.extent) : nullptr;
    }
    BoundNodePtr operand = value(*parsed.children[0]);
    if (operand && is_constant_text(*operand))
        operand = read_as_number(*operand, "`-` needs a number");
    if (!operand)
        return nullptr;
    if (!is_number(operand->type))
        return fail(concat("`-` needs a number; ", shown(*operand)), operand->place);
    const ValueType type = holds_integers(*operand) ? ValueType::Integer : ValueType::Real;
    return make_.call(negation(storage_of(type)), type, {std::move(operand)}, parsed.extent);
}

BoundNodePtr Binder::binary(const ParsedNode &parsed)
{
    BoundNodePtr left = value(*parsed.children[0]);
    BoundNodePtr right = left ? value(*parsed.children[1]) : nullptr;
    if (!right)
        return nullptr;
    if (parsed.op == Operator::Match || parsed.op == Operator::NotMatch)
        return match(parsed, std::move(left), std::move(right));
    if (binding_level(parsed.op) == binding_level(Operator::Equal))
        return comparison(parsed, std::move(left), std::move(right));
    return arithmetic(parsed, std::move(left), std::move(right));
}

BoundNodePtr Binder::logical(const ParsedNode &parsed)
{
    std::vector<BoundNodePtr> children;
    children.reserve(parsed.children.size());
    for (const auto &child : parsed.children) {
        BoundNodePtr bound = condition(*child);
        if (!bound)
            return nullptr;
        children.push_back(std::move(bound));
    }
    return make_.logical(parsed.op == Operator::And ? Kind::And : Kind::Or, std::move(children),
                         parsed.extent);
}

BoundNodePtr Binder::conditional(const ParsedNode &parsed)
{
    BoundNodePtr chosen_by = condition(*parsed.children[0]);
    if (!chosen_by)
        return nullptr;
    std::vector<BoundNodePtr> values(2);
    for (std::size_t i = 0; i < 2; ++i) {
        values[i] = value(*parsed.children[i + 1]);
        if (!values[i])
            return nullptr;
    }
    if (!unify(values))
        return fail(concat("both values of `?:` need one type; ", shown(*values[0]), ", ", shown(*values[1])),
                    parsed.place);
    return make_.conditional(std::move(chosen_by), std::move(values[0]), std::move(values[1]), parsed.extent);
}

// A constant text beside a number is read as one; beside a time, in a sum or a difference, as a time.
BoundNodePtr Binder::arithmetic_operand(const ParsedNode &parsed, BoundNodePtr operand,
                                        const BoundNode &other)
{
    if (is_number(operand->type))
        return operand;
    const std::string needs = concat("`", spelling(parsed.op), "` needs numbers");
    if (!is_constant_text(*operand) || !is_number(other.type))
        return fail(concat(needs, parsed.op == Operator::Add ? ", strcat(a, b) joins texts; " : "; ",
                           shown(*operand)),
                    operand->place);
    if (other.type == ValueType::Time && (parsed.op == Operator::Add || parsed.op == Operator::Subtract) &&
        !read_number(operand->constant.text))
        return to_time(std::move(operand));
    return read_as_number(*operand, needs);
}

BoundNodePtr Binder::arithmetic(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right)
{
    const BoundNodePtr written_left = left;
    left = arithmetic_operand(parsed, std::move(left), *right);
    right = left ? arithmetic_operand(parsed, std::move(right), *written_left) : nullptr;
    if (!right)
        return nullptr;
    const bool left_time = left->type == ValueType::Time;
    const bool right_time = right->type == ValueType::Time;
    if ((left_time && right->type == ValueType::Yearday) || (right_time && left->type == ValueType::Yearday))
        return fail(concat("`", spelling(parsed.op),
                           "` takes no time with a yearday; epoch(…) is the time at which a day begins"),
                    parsed.place);
    if (holds_integers(*left) && holds_integers(*right) && parsed.op != Operator::Power)
        return make_.call(integer_arithmetic(parsed.op), ValueType::Integer,
                          {std::move(left), std::move(right)}, parsed.extent);
    // Seconds later or earlier than a time is a time; between two times there are seconds.
    const bool moved_time = (parsed.op == Operator::Add && left_time != right_time) ||
                            (parsed.op == Operator::Subtract && left_time && !right_time);
    return make_.call(real_arithmetic(parsed.op), moved_time ? ValueType::Time : ValueType::Real,
                      {to_real(std::move(left)), to_real(std::move(right))}, parsed.extent);
}

BoundNodePtr Binder::match(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right)
{
    if (left->type != ValueType::Text)
        return fail(concat("`", spelling(parsed.op), "` matches text; ", shown(*left)), left->place);
    if (!is_constant_text(*right))
        return fail(
            concat("expected a pattern, a constant text, after `", spelling(parsed.op), "`; ", shown(*right)),
            right->place);
    if (++patterns_ > max_patterns)
        return fail(concat("more than ", max_patterns, " patterns; join some of them as 'a|b'"),
                    right->place);
    std::string reason;
    auto pattern = Pattern::compile(right->constant.text, reason);
    if (!pattern)
        return fail(concat("expected a regular expression: ", shortened(reason, 100)), right->place);
    return make_.match(parsed.op, std::move(pattern), std::move(left), parsed.extent);
}

// ---- Conversions -----------------------------------------------------------------------------------------

BoundNodePtr Binder::to_real(BoundNodePtr number)
{
    if (!holds_integers(*number))
        return number;
    const Place place = number->place;
    return make_.call(integer_to_real, ValueType::Real, {std::move(number)}, place);
}

BoundNodePtr Binder::to_time(BoundNodePtr bound)
{
    const Place place = bound->place;
    if (is_constant_text(*bound)) {
        const auto span = written_span(bound->constant.text);
        return span ? make_.real(span->begin, place, ValueType::Time)
                    : fail(concat("expected a time, as '2018-02-07 05:12:13'; ",
                                  quoted(text_.substr(place.offset, place.length)), " can't be read as one"),
                           place);
    }
    if (bound->type == ValueType::Text)
        return make_.call(text_to_time, ValueType::Time, {std::move(bound)}, place);
    if (bound->type == ValueType::Yearday)
        return make_.call(yearday_to_begin, ValueType::Time, {std::move(bound)}, place);
    return to_real(std::move(bound));
}

BoundNodePtr Binder::read_as_number(const BoundNode &text, std::string_view why)
{
    const auto number = read_number(text.constant.text);
    if (!number)
        return fail(concat(why, "; ", quoted(text_.substr(text.place.offset, text.place.length)),
                           " can't be read as one"),
                    text.place);
    return number->whole ? make_.integer(number->integer, text.place) : make_.real(number->real, text.place);
}

bool Binder::unify(std::vector<BoundNodePtr> &values)
{
    const auto any = [&](auto holds) {
        return std::any_of(values.begin(), values.end(),
                           [&](const BoundNodePtr &node) { return holds(*node); });
    };
    const auto all_of_type = [&](ValueType type) {
        return !any([type](const BoundNode &n) { return n.type != type; });
    };
    if (all_of_type(values.front()->type))
        return true;
    const bool time = any([](const BoundNode &n) { return n.type == ValueType::Time; });
    if (any([](const BoundNode &n) { return n.type == ValueType::Text; }) ||
        (time && any([](const BoundNode &n) { return n.type == ValueType::Yearday; })))
        return false;
    const bool integers = !any([](const BoundNode &n) { return !holds_integers(n); });
    const ValueType type = time ? ValueType::Time : integers ? ValueType::Integer : ValueType::Real;
    // The node itself may lie in a tree that is bound elsewhere, so it is a copy that gets the other type.
    for (BoundNodePtr &node : values) {
        if (!integers)
            node = to_real(std::move(node));
        if (node->type != type) {
            auto retyped = std::make_shared<BoundNode>(*node);
            retyped->type = type;
            retyped->constant.type = type;
            node = std::move(retyped);
        }
    }
    return true;
}

// ---- The door --------------------------------------------------------------------------------------------

namespace {

Result<BoundExpression> outcome(BoundNodePtr root, const Binder &binder, const ParsedExpression &parsed,
                                ExpressionError *error)
{
    if (root)
        return BoundExpression(std::move(root));
    if (error)
        *error = binder.error();
    return error_status(parsed.text(), binder.error());
}

void collect_columns(const BoundNode &node, std::vector<std::size_t> &columns)
{
    if (node.kind == Kind::Field)
        columns.push_back(node.column);
    for (const BoundNodePtr &child : node.children)
        collect_columns(*child, columns);
}

} // namespace

Result<BoundExpression> BoundExpression::bind(const ParsedExpression &parsed, const BindingScope &scope,
                                              ExpressionError *error)
{
    Binder binder(parsed.text(), scope);
    return outcome(binder.value(parsed.root()), binder, parsed, error);
}

Result<BoundExpression> BoundExpression::bind_condition(const ParsedExpression &parsed,
                                                        const BindingScope &scope, ExpressionError *error)
{
    Binder binder(parsed.text(), scope);
    return outcome(binder.condition(parsed.root()), binder, parsed, error);
}

std::vector<std::size_t> BoundExpression::columns() const
{
    std::vector<std::size_t> columns;
    collect_columns(*root_, columns);
    std::sort(columns.begin(), columns.end());
    columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    return columns;
}

bool is_constant(const BoundExpression &expression)
{
    return expression.columns().empty();
}

} // namespace orvane::expr
