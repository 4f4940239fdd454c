#ifndef ORVANE_TESTS_EXPRESSION_BOUND_H
#define ORVANE_TESTS_EXPRESSION_BOUND_H

#include <stdexcept>
#include <string>

#include "expression/bound_expression.h"

namespace orvane::expr::test {

/* A condition that must be right. */
inline BoundExpression conditionOf(const std::string &text, const BindingScope &scope)
{
    const auto parsed = ParsedExpression::parse(text);
    if (!parsed.ok())
        throw std::runtime_error(std::string(parsed.status().message()));
    const auto bound = BoundExpression::bind_condition(*parsed, scope);
    if (!bound.ok())
        throw std::runtime_error(std::string(bound.status().message()));
    return *bound;
}

/* The status of parsing and binding. */
inline Status statusOf(const std::string &text, const BindingScope &scope)
{
    const auto parsed = ParsedExpression::parse(text);
    return parsed.ok() ? BoundExpression::bind(*parsed, scope).status() : parsed.status();
}

} // namespace orvane::expr::test

#endif
