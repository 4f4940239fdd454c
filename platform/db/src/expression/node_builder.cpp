#include "expression/node_builder.h"

#include <algorithm>

#include "expression/comparison_masks.h"
#include "expression/comparison_tests.h"

namespace orvane::expr {

namespace {

using Kind = BoundNode::Kind;
using Dependence = BoundNode::Dependence;

// One row without columns.
class ConstantBatch : public ColumnBatch
{
public:
    std::size_t size() const override { return 1; }
    Result<ColumnView> column(std::size_t) override
    {
        return Status(Code::Argument, "a constant has no column");
    }
};

BoundNode blank(Kind kind, ValueType type, Place place)
{
    BoundNode node;
    node.kind = kind;
    node.type = type;
    node.place = place;
    return node;
}

void set_dependence(BoundNode &node)
{
    for (const BoundNodePtr &child : node.children) {
        if (child->dependence == Dependence::None)
            continue;
        if (node.dependence == Dependence::None) {
            node.dependence = child->dependence;
            node.column = child->column;
        } else if (child->dependence == Dependence::Other || child->column != node.column) {
            node.dependence = Dependence::Other;
        }
    }
}

} // namespace

BoundNodePtr NodeBuilder::finished(BoundNode node)
{
    const bool foldable =
        std::all_of(node.children.begin(), node.children.end(),
                    [](const BoundNodePtr &child) { return child->kind == Kind::Constant; });
    if (foldable) {
        ConstantBatch batch;
        std::vector<Value> values;
        if (folding_.values(node, batch, first_positions(1), values).ok())
            return constant(std::move(values.front()), node.place);
    }
    set_dependence(node);
    return std::make_shared<const BoundNode>(std::move(node));
}

BoundNodePtr NodeBuilder::constant(Value value, Place place)
{
    BoundNode node = blank(Kind::Constant, value.type, place);
    node.constant = std::move(value);
    return std::make_shared<const BoundNode>(std::move(node));
}

BoundNodePtr NodeBuilder::integer(std::int64_t number, Place place, ValueType type)
{
    Value value;
    value.type = type;
    value.integer = number;
    return constant(std::move(value), place);
}

BoundNodePtr NodeBuilder::real(double number, Place place, ValueType type)
{
    Value value;
    value.type = type;
    value.real = number;
    return constant(std::move(value), place);
}

BoundNodePtr NodeBuilder::text(std::string characters, Place place)
{
    Value value;
    value.type = ValueType::Text;
    value.text = std::move(characters);
    return constant(std::move(value), place);
}

BoundNodePtr NodeBuilder::field(std::size_t column, ValueType type, Place place)
{
    BoundNode node = blank(Kind::Field, type, place);
    node.column = column;
    node.dependence = type == ValueType::Text ? Dependence::OneText : Dependence::Other;
    return std::make_shared<const BoundNode>(std::move(node));
}

BoundNodePtr NodeBuilder::now(Place place)
{
    return std::make_shared<const BoundNode>(blank(Kind::Now, ValueType::Time, place));
}

BoundNodePtr NodeBuilder::call(Kernel kernel, ValueType type, std::vector<BoundNodePtr> children, Place place)
{
    BoundNode node = blank(Kind::Call, type, place);
    node.kernel = kernel;
    node.children = std::move(children);
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::test(TestKernel kernel, std::vector<BoundNodePtr> children, Place place)
{
    BoundNode node = blank(Kind::Test, ValueType::Boolean, place);
    node.test = kernel;
    node.children = std::move(children);
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::comparison(Operator op, TestKernel kernel, std::vector<BoundNodePtr> children,
                                     Place place, bool day_span)
{
    BoundNode node = blank(Kind::Test, ValueType::Boolean, place);
    node.test = kernel;
    node.op = op;
    node.comparison = true;
    node.day_span = day_span;
    node.children = std::move(children);
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::number_comparison(Operator op, BoundNodePtr left, BoundNodePtr right, Place place)
{
    const Storage storage = storage_of(left->type);
    BoundNode node = blank(Kind::Test, ValueType::Boolean, place);
    node.test = storage == Storage::Integer ? integer_comparison(op) : real_comparison(op);
    if (left->kind == Kind::Field && right->kind == Kind::Constant)
        node.mask = comparison_mask(op, storage);
    node.op = op;
    node.comparison = true;
    node.children = {std::move(left), std::move(right)};
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::match(Operator op, std::shared_ptr<const Pattern> pattern, BoundNodePtr text,
                                Place place)
{
    BoundNode node = blank(Kind::Test, ValueType::Boolean, place);
    node.test = pattern_match(op);
    node.op = op;
    node.pattern = std::move(pattern);
    node.children = {std::move(text)};
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::logical(BoundNode::Kind kind, std::vector<BoundNodePtr> children, Place place)
{
    BoundNode node = blank(kind, ValueType::Boolean, place);
    node.children = std::move(children);
    return finished(std::move(node));
}

BoundNodePtr NodeBuilder::conditional(BoundNodePtr condition, BoundNodePtr yes, BoundNodePtr no, Place place)
{
    BoundNode node = blank(Kind::Conditional, yes->type, place);
    node.children = {std::move(condition), std::move(yes), std::move(no)};
    return finished(std::move(node));
}

} // namespace orvane::expr
