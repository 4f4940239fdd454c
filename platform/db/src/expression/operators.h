// The operators of the expression language.
#pragma once

#include <cstdint>
#include <string_view>

namespace orvane::expr {

enum class Operator : std::uint8_t {
    Or,
    And,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Match,
    NotMatch,
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    Not,
    Negate,
};

// As it is written.
std::string_view spelling(Operator op);

// How tightly a binary operator binds, from 1 (loosest); 0 for those that are not in the ladder of
// left-to-right binary operators (`**`, `!` and the sign).
int binding_level(Operator op);

// The comparison that holds for (b, a) where `op` holds for (a, b).
Operator mirrored(Operator op);

bool is_ordering(Operator op); // < <= > >=

} // namespace orvane::expr
