#include "expression/arithmetic_kernels.h"

#include <cstdint>
#include <limits>

#include "expression/kernel_map.h"

namespace orvane::expr {

namespace {

using Integer = std::int64_t;

bool add(Integer &out, Integer a, Integer b)
{
    return !__builtin_add_overflow(a, b, &out);
}
bool subtract(Integer &out, Integer a, Integer b)
{
    return !__builtin_sub_overflow(a, b, &out);
}
bool multiply(Integer &out, Integer a, Integer b)
{
    return !__builtin_mul_overflow(a, b, &out);
}

// Towards zero, as in C and SQL; the one quotient that overflows is that of the least integer by -1.
bool divide(Integer &out, Integer a, Integer b)
{
    if (b == 0 || (b == -1 && a == std::numeric_limits<Integer>::min()))
        return false;
    out = a / b;
    return true;
}

// With the sign of the dividend.
bool remainder(Integer &out, Integer a, Integer b)
{
    if (b == 0)
        return false;
    out = b == -1 ? 0 : a % b;
    return true;
}

bool negate(Integer &out, Integer a)
{
    return subtract(out, 0, a);
}

double add_reals(double a, double b)
{
    return a + b;
}
double subtract_reals(double a, double b)
{
    return a - b;
}
double multiply_reals(double a, double b)
{
    return a * b;
}
bool divide_reals(double &out, double a, double b)
{
    if (b == 0)
        return false;
    out = a / b;
    return true;
}
double remainder_of_reals(double a, double b)
{
    return std::fmod(a, b);
}
double power_of_reals(double a, double b)
{
    return std::pow(a, b);
}
double negate_real(double a)
{
    return 0.0 - a; // which gives no negative zero to be shown
}

} // namespace

Kernel integer_arithmetic(Operator op)
{
    switch (op) {
    case Operator::Add:
        return mapped<add, Integer, Integer, Integer>;
    case Operator::Subtract:
        return mapped<subtract, Integer, Integer, Integer>;
    case Operator::Multiply:
        return mapped<multiply, Integer, Integer, Integer>;
    case Operator::Divide:
        return mapped<divide, Integer, Integer, Integer>;
    case Operator::Remainder:
        return mapped<remainder, Integer, Integer, Integer>;
    default:
        return nullptr;
    }
}

Kernel real_arithmetic(Operator op)
{
    switch (op) {
    case Operator::Add:
        return real_function<add_reals, double, double>;
    case Operator::Subtract:
        return real_function<subtract_reals, double, double>;
    case Operator::Multiply:
        return real_function<multiply_reals, double, double>;
    case Operator::Divide:
        return mapped<divide_reals, double, double, double>;
    case Operator::Remainder:
        return real_function<remainder_of_reals, double, double>;
    case Operator::Power:
        return real_function<power_of_reals, double, double>;
    default:
        return nullptr;
    }
}

Kernel negation(Storage storage)
{
    return storage == Storage::Integer ? mapped<negate, Integer, Integer>
                                       : real_function<negate_real, double>;
}

} // namespace orvane::expr
