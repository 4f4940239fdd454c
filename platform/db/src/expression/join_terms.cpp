#include "expression/join_terms.h"

#include <utility>

namespace orvane::expr {

namespace {

using Kind = BoundNode::Kind;

enum class Side : std::uint8_t { Neither, Left, Right, Both };

Side side_of(const BoundExpression &expression, std::size_t first_right)
{
    Side side = Side::Neither;
    for (const std::size_t column : expression.columns()) {
        const Side here = column < first_right ? Side::Left : Side::Right;
        side = side == Side::Neither || side == here ? here : Side::Both;
    }
    return side;
}

Side side_of(const BoundNodePtr &node, std::size_t first_right)
{
    return side_of(BoundExpression(node), first_right);
}

class Division
{
public:
    explicit Division(std::size_t first_right) : first_right_(first_right) {}

    void add(const BoundNodePtr &node)
    {
        if (node->kind == Kind::And) {
            for (const BoundNodePtr &child : node->children)
                add(child);
            return;
        }
        switch (side_of(node, first_right_)) {
        case Side::Left:
            terms_.left_only.emplace_back(node);
            return;
        case Side::Right:
            terms_.right_only.emplace_back(node);
            return;
        default:
            break;
        }
        if (!(node->day_span ? add_day(node) : add_comparison(node->op, node)))
            terms_.rest.emplace_back(node);
    }

    JoinTerms take() { return std::move(terms_); }

private:
    // False where the node is no comparison between the sides.
    bool add_comparison(Operator op, const BoundNodePtr &node)
    {
        if (!node->comparison || node->children.size() != 2 || op == Operator::NotEqual)
            return false;
        return add_term(op, node->children[0], node->children[1]);
    }

    bool add_term(Operator op, BoundNodePtr left, BoundNodePtr right)
    {
        if (side_of(left, first_right_) == Side::Right) {
            std::swap(left, right);
            op = mirrored(op);
        }
        if (side_of(left, first_right_) != Side::Left || side_of(right, first_right_) != Side::Right)
            return false;
        auto &terms = op == Operator::Equal ? terms_.equalities : terms_.orderings;
        terms.push_back({op, BoundExpression(std::move(left)), BoundExpression(std::move(right))});
        return true;
    }

    // A time against a day [begin, end) is one or two orderings.
    bool add_day(const BoundNodePtr &node)
    {
        const BoundNodePtr &time = node->children[0];
        const BoundNodePtr &begin = node->children[1];
        const BoundNodePtr &end = node->children[2];
        switch (node->op) {
        case Operator::Equal:
            return add_term(Operator::GreaterEqual, time, begin) && add_term(Operator::Less, time, end);
        case Operator::Less:
        case Operator::GreaterEqual:
            return add_term(node->op, time, begin);
        case Operator::LessEqual:
            return add_term(Operator::Less, time, end);
        case Operator::Greater:
            return add_term(Operator::GreaterEqual, time, end);
        default:
            return false;
        }
    }

    std::size_t first_right_;
    JoinTerms terms_;
};

} // namespace

JoinTerms take_apart(const BoundExpression &condition, std::size_t first_right)
{
    Division division(first_right);
    division.add(condition.root());
    return division.take();
}

} // namespace orvane::expr
