#include "expression/comparison_tests.h"

#include <cmath>
#include <compare>
#include <type_traits>

#include "expression/pattern.h"
#include "expression/text_kernels.h"

namespace orvane::expr {

namespace {

using Text = std::string_view;

constexpr double two_to_63 = 9223372036854775808.0;

// Exact: the integer part of the real number is compared as an integer, then its fraction counts.
std::partial_ordering compared(std::int64_t integer, double real)
{
    if (std::isnan(real))
        return std::partial_ordering::unordered;
    if (real >= two_to_63)
        return std::partial_ordering::less;
    if (real < -two_to_63)
        return std::partial_ordering::greater;
    const double whole = std::trunc(real);
    const auto order = integer <=> static_cast<std::int64_t>(whole);
    return order != 0 ? std::partial_ordering(order) : 0.0 <=> (real - whole);
}

std::partial_ordering compared(std::int64_t a, std::int64_t b)
{
    return a <=> b;
}
std::partial_ordering compared(double a, double b)
{
    return a <=> b;
}

std::partial_ordering compared(Text a, Text b)
{
    return without_trailing_blanks(a).compare(without_trailing_blanks(b)) <=> 0;
}

template <Operator op>
bool holds(std::partial_ordering order)
{
    if constexpr (op == Operator::Less)
        return order < 0;
    else if constexpr (op == Operator::LessEqual)
        return order <= 0;
    else if constexpr (op == Operator::Greater)
        return order > 0;
    else if constexpr (op == Operator::GreaterEqual)
        return order >= 0;
    else
        return order == 0;
}

// Whether a comparison counts at all, by the presence of both sides.
template <Operator op>
bool countable(std::uint8_t presence)
{
    if constexpr (op == Operator::Equal || op == Operator::NotEqual)
        return (presence & Missing) == 0;
    else
        return presence == Present;
}

template <typename Holds>
std::size_t kept(Selection selection, std::uint32_t *out, Holds keep)
{
    std::size_t count = 0;
    for_each(selection, [&](std::size_t position) {
        out[count] = static_cast<std::uint32_t>(position);
        count += keep(position) ? 1 : 0;
    });
    return count;
}

// What `holds` of `compared` answers, and of != its contrary, for numbers of one kind.
template <Operator op, typename T>
bool holds_plainly(T a, T b)
{
    if constexpr (op == Operator::Less)
        return a < b;
    else if constexpr (op == Operator::LessEqual)
        return a <= b;
    else if constexpr (op == Operator::Greater)
        return a > b;
    else if constexpr (op == Operator::GreaterEqual)
        return a >= b;
    else if constexpr (op == Operator::Equal)
        return a == b;
    else
        return a != b;
}

// A field against a constant, as most conditions are: nothing is asked at each position that is the same at
// all.
template <Operator op, typename T>
std::size_t compare_with_constant(const Reader<T> &left, const Reader<T> &right, Selection selection,
                                  std::uint32_t *out)
{
    const T constant = right[0];
    const std::uint8_t presence = right.presence(0);
    if (left.has_one_presence() && countable<op>(static_cast<std::uint8_t>(left.presence(0) | presence)))
        return kept(selection, out,
                    [&](std::size_t position) { return holds_plainly<op>(left[position], constant); });
    return kept(selection, out, [&](std::size_t position) {
        const bool counts = countable<op>(static_cast<std::uint8_t>(left.presence(position) | presence));
        const bool held = holds_plainly<op>(left[position], constant);
        return op == Operator::NotEqual ? !counts || held : counts && held;
    });
}

template <Operator op, typename Left, typename Right>
std::size_t compare(const BoundNode &, std::span<const Vector> arguments, Selection selection,
                    std::uint32_t *out)
{
    const Reader<Left> left(arguments[0]);
    const Reader<Right> right(arguments[1]);
    if constexpr (std::is_same_v<Left, Right> && std::is_arithmetic_v<Left>)
        if (right.is_single())
            return compare_with_constant<op>(left, right, selection, out);
    return kept(selection, out, [&](std::size_t position) {
        const auto presence = static_cast<std::uint8_t>(left.presence(position) | right.presence(position));
        const bool held = countable<op>(presence) && holds<op>(compared(left[position], right[position]));
        return op == Operator::NotEqual ? !held : held;
    });
}

// `end` is not in the span, unless the span is one instant.
template <Operator op>
bool span_holds(double time, double begin, double end)
{
    const bool before = time < begin;
    const bool after = end > begin ? time >= end : time > begin;
    if constexpr (op == Operator::Less)
        return before;
    else if constexpr (op == Operator::LessEqual)
        return !after && !std::isnan(time);
    else if constexpr (op == Operator::Greater)
        return after;
    else if constexpr (op == Operator::GreaterEqual)
        return !before && !std::isnan(time);
    else
        return !before && !after && !std::isnan(time);
}

template <Operator op>
std::size_t compare_span(const BoundNode &node, std::span<const Vector> arguments, Selection selection,
                         std::uint32_t *out)
{
    const Reader<double> time(arguments[0]);
    const Reader<double> begin(arguments[1]);
    const Reader<double> end(arguments[2]);
    // A null time lies on no day, though the number that stands for it may be one of the seventeenth century.
    const bool present_only = node.day_span;
    return kept(selection, out, [&](std::size_t position) {
        const auto presence = static_cast<std::uint8_t>(time.presence(position) | begin.presence(position) |
                                                        end.presence(position));
        const bool counts = present_only ? presence == Present : countable<op>(presence);
        const bool held = counts && span_holds<op>(time[position], begin[position], end[position]);
        return op == Operator::NotEqual ? !held : held;
    });
}

template <bool wanted>
std::size_t match(const BoundNode &node, std::span<const Vector> arguments, Selection selection,
                  std::uint32_t *out)
{
    const Reader<Text> text(arguments[0]);
    const Pattern &pattern = *node.pattern;
    return kept(selection, out, [&](std::size_t position) {
        const bool matches =
            text.presence(position) != Missing && pattern.found_in(without_trailing_blanks(text[position]));
        return matches == wanted;
    });
}

template <typename T>
std::size_t is_true(const BoundNode &, std::span<const Vector> arguments, Selection selection,
                    std::uint32_t *out)
{
    const Reader<T> number(arguments[0]);
    return kept(selection, out, [&](std::size_t position) {
        const T value = number[position];
        return number.presence(position) == Present && value != T{0} && value == value;
    });
}

template <typename T>
std::size_t is_null(const BoundNode &, std::span<const Vector> arguments, Selection selection,
                    std::uint32_t *out)
{
    const Reader<T> value(arguments[0]);
    return kept(selection, out, [&](std::size_t position) {
        if constexpr (std::is_same_v<T, double>)
            return value.presence(position) != Present || std::isnan(value[position]);
        else
            return value.presence(position) != Present;
    });
}

template <typename Left, typename Right>
TestKernel comparison(Operator op)
{
    switch (op) {
    case Operator::Equal:
        return compare<Operator::Equal, Left, Right>;
    case Operator::NotEqual:
        return compare<Operator::NotEqual, Left, Right>;
    case Operator::Less:
        return compare<Operator::Less, Left, Right>;
    case Operator::LessEqual:
        return compare<Operator::LessEqual, Left, Right>;
    case Operator::Greater:
        return compare<Operator::Greater, Left, Right>;
    case Operator::GreaterEqual:
        return compare<Operator::GreaterEqual, Left, Right>;
    default:
        return nullptr;
    }
}

} // namespace

TestKernel integer_comparison(Operator op)
{
    return comparison<std::int64_t, std::int64_t>(op);
}
TestKernel real_comparison(Operator op)
{
    return comparison<double, double>(op);
}
TestKernel mixed_comparison(Operator op)
{
    return comparison<std::int64_t, double>(op);
}
TestKernel text_comparison(Operator op)
{
    return comparison<Text, Text>(op);
}

TestKernel span_comparison(Operator op)
{
    switch (op) {
    case Operator::Equal:
        return compare_span<Operator::Equal>;
    case Operator::NotEqual:
        return compare_span<Operator::NotEqual>;
    case Operator::Less:
        return compare_span<Operator::Less>;
    case Operator::LessEqual:
        return compare_span<Operator::LessEqual>;
    case Operator::Greater:
        return compare_span<Operator::Greater>;
    case Operator::GreaterEqual:
        return compare_span<Operator::GreaterEqual>;
    default:
        return nullptr;
    }
}

TestKernel pattern_match(Operator op)
{
    return op == Operator::Match ? match<true> : match<false>;
}

TestKernel truth(Storage storage)
{
    return storage == Storage::Integer ? is_true<std::int64_t> : is_true<double>;
}

TestKernel null_test(Storage storage)
{
    switch (storage) {
    case Storage::Integer:
        return is_null<std::int64_t>;
    case Storage::Real:
        return is_null<double>;
    default:
        return is_null<Text>;
    }
}

} // namespace orvane::expr
