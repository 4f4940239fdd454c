// Gives the names and operators of a parsed expression their meaning. The inside of BoundExpression::bind.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "expression/binding_scope.h"
#include "expression/function_table.h"
#include "expression/node_builder.h"
#include "expression/parsed_expression.h"

namespace orvane::expr {

// Every method that answers a node answers null once something is wrong; the first error is kept.
class Binder
{
public:
    // Text and scope are borrowed.
    Binder(std::string_view text, const BindingScope &scope) : text_(text), scope_(scope) {}

    BoundNodePtr value(const ParsedNode &parsed);
    BoundNodePtr condition(const ParsedNode &parsed);
    const ExpressionError &error() const { return *error_; }

private:
    BoundNodePtr name(const ParsedNode &parsed);
    BoundNodePtr unknown_name(const ParsedNode &parsed);
    BoundNodePtr unary(const ParsedNode &parsed);
    BoundNodePtr binary(const ParsedNode &parsed);
    BoundNodePtr logical(const ParsedNode &parsed);
    BoundNodePtr conditional(const ParsedNode &parsed);

    BoundNodePtr arithmetic(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right);
    BoundNodePtr arithmetic_operand(const ParsedNode &parsed, BoundNodePtr operand, const BoundNode &other);
    BoundNodePtr match(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right);

    BoundNodePtr comparison(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right);
    BoundNodePtr number_comparison(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right);
    BoundNodePtr comparison_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr number,
                                      BoundNodePtr text);
    BoundNodePtr time_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr time, BoundNodePtr text);
    BoundNodePtr yearday_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr yearday,
                                   BoundNodePtr text);

    BoundNodePtr call(const ParsedNode &parsed);
    BoundNodePtr unknown_function(const ParsedNode &parsed);
    BoundNodePtr built(const Function &function, const ParsedNode &parsed,
                       std::vector<BoundNodePtr> arguments);
    BoundNodePtr extreme(const Function &function, const ParsedNode &parsed,
                         std::vector<BoundNodePtr> arguments);
    BoundNodePtr converted(Parameter parameter, BoundNodePtr argument);

    // A condition of a bound value; `place` is where it stands.
    BoundNodePtr as_condition(BoundNodePtr value);
    BoundNodePtr to_real(BoundNodePtr number);
    BoundNodePtr to_time(BoundNodePtr value);
    // The constant text as a number, or an error at its place; `why` ends the reason.
    BoundNodePtr read_as_number(const BoundNode &text, std::string_view why);
    // Brings values to one type; false when there is none.
    bool unify(std::vector<BoundNodePtr> &values);

    BoundNodePtr fail(std::string reason, Place place);
    std::string shown(const BoundNode &node) const;

    std::string_view text_;
    const BindingScope &scope_;
    NodeBuilder make_;
    std::size_t patterns_ = 0;
    std::optional<ExpressionError> error_;
};

} // namespace orvane::expr
