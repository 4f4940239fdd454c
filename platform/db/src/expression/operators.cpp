#include "expression/operators.h"

#include <array>

namespace orvane::expr {

namespace {

struct OperatorRow {
    std::string_view spelling;
    int level;
    Operator mirrored;
};

// In the order of the enumeration.
constexpr std::array<OperatorRow, 18> rows = {{
    {"||", 1, Operator::Or},
    {"&&", 2, Operator::And},
    {"==", 3, Operator::Equal},
    {"!=", 3, Operator::NotEqual},
    {"<", 3, Operator::Greater},
    {"<=", 3, Operator::GreaterEqual},
    {">", 3, Operator::Less},
    {">=", 3, Operator::LessEqual},
    {"=~", 3, Operator::Match},
    {"!~", 3, Operator::NotMatch},
    {"+", 4, Operator::Add},
    {"-", 4, Operator::Subtract},
    {"*", 5, Operator::Multiply},
    {"/", 5, Operator::Divide},
    {"%", 5, Operator::Remainder},
    {"**", 0, Operator::Power},
    {"!", 0, Operator::Not},
    {"-", 0, Operator::Negate},
}};

const OperatorRow &row(Operator op)
{
    return rows[static_cast<std::size_t>(op)];
}

} // namespace

std::string_view spelling(Operator op)
{
    return row(op).spelling;
}
int binding_level(Operator op)
{
    return row(op).level;
}
Operator mirrored(Operator op)
{
    return row(op).mirrored;
}
bool is_ordering(Operator op)
{
    return op >= Operator::Less && op <= Operator::GreaterEqual;
}

} // namespace orvane::expr
