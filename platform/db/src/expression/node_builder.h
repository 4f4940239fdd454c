// Makes bound nodes: sets on what they depend, and works out at once what is constant.
#pragma once

#include <vector>

#include "expression/bound_expression.h"
#include "expression/evaluation.h"

namespace orvane::expr {

class NodeBuilder
{
public:
    BoundNodePtr constant(Value value, Place place);
    BoundNodePtr integer(std::int64_t value, Place place, ValueType type = ValueType::Integer);
    BoundNodePtr real(double value, Place place, ValueType type = ValueType::Real);
    BoundNodePtr text(std::string value, Place place);
    BoundNodePtr field(std::size_t column, ValueType type, Place place);
    BoundNodePtr now(Place place);
    BoundNodePtr call(Kernel kernel, ValueType type, std::vector<BoundNodePtr> children, Place place);
    BoundNodePtr test(TestKernel kernel, std::vector<BoundNodePtr> children, Place place);
    // A test that is a comparison; op says which.
    BoundNodePtr comparison(Operator op, TestKernel kernel, std::vector<BoundNodePtr> children, Place place,
                            bool day_span = false);
    // Of two numbers that are stored alike.
    BoundNodePtr number_comparison(Operator op, BoundNodePtr left, BoundNodePtr right, Place place);
    BoundNodePtr match(Operator op, std::shared_ptr<const Pattern> pattern, BoundNodePtr text, Place place);
    // And or Or of conditions, Not of one.
    BoundNodePtr logical(BoundNode::Kind kind, std::vector<BoundNodePtr> children, Place place);
    BoundNodePtr conditional(BoundNodePtr condition, BoundNodePtr yes, BoundNodePtr no, Place place);

private:
    BoundNodePtr finished(BoundNode node);

    Evaluation folding_{0};
};

inline bool is_constant_text(const BoundNode &node)
{
    return node.kind == BoundNode::Kind::Constant && node.type == ValueType::Text;
}

} // namespace orvane::expr
