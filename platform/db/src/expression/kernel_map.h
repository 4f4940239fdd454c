// Makes kernels of functions on single values.
#pragma once

#include <cmath>
#include <tuple>
#include <utility>

#include "expression/bound_expression.h"

namespace orvane::expr {

namespace detail {

template <typename T>
T *written(Vector &out);
template <>
inline std::int64_t *written(Vector &out)
{
    return out.integers();
}
template <>
inline double *written(Vector &out)
{
    return out.reals();
}
template <>
inline std::string_view *written(Vector &out)
{
    return out.texts();
}

template <typename... In, std::size_t... I>
auto readers(std::span<const Vector> arguments, std::index_sequence<I...>)
{
    return std::tuple<Reader<In>...>(Reader<In>(arguments[I])...);
}

// Writes an outcome: none when the function says so, and none when it is no finite number.
template <typename Out>
void write(Out *values, std::uint8_t *presences, std::size_t position, bool has, Out value,
           std::uint8_t presence)
{
    if constexpr (std::is_same_v<Out, double>)
        has = has && std::isfinite(value);
    values[position] = has ? value : Out{};
    presences[position] = has ? presence : std::uint8_t{Missing};
}

} // namespace detail

// The rule of functions and arithmetic: without a value where an argument is null.
// `function` is bool(Out &, In...); false is "no value".
template <typename Out, typename... In, typename Function>
void map_values(std::span<const Vector> arguments, Selection selection, Vector &out, Function function)
{
    const auto readers = detail::readers<In...>(arguments, std::index_sequence_for<In...>{});
    Out *values = detail::written<Out>(out);
    std::uint8_t *presences = out.presences();
    std::apply(
        [&](const auto &...in) {
            for_each(selection, [&](std::size_t position) {
                const int absent = (in.presence(position) | ...);
                Out value{};
                const bool has = absent == 0 && function(value, in[position]...);
                detail::write<Out>(values, presences, position, has, value, Present);
            });
        },
        readers);
}

// The rule of conversions: a stored null stays one, with its value converted.
template <typename Out, typename In, typename Function>
void convert_values(std::span<const Vector> arguments, Selection selection, Vector &out, Function function)
{
    const Reader<In> in(arguments[0]);
    Out *values = detail::written<Out>(out);
    std::uint8_t *presences = out.presences();
    for_each(selection, [&](std::size_t position) {
        const std::uint8_t presence = in.presence(position);
        Out value{};
        const bool has = presence != Missing && function(value, in[position]);
        detail::write<Out>(values, presences, position, has, value, presence);
    });
}

// A kernel of `bool f(Out &, In...)`.
template <auto function, typename Out, typename... In>
void mapped(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    map_values<Out, In...>(arguments, selection, out,
                           [](Out &value, In... in) { return function(value, in...); });
}

// A kernel of a mathematical function: `double f(double...)`.
template <auto function, typename... In>
void real_function(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    map_values<double, In...>(arguments, selection, out, [](double &value, In... in) {
        value = function(in...);
        return true;
    });
}

} // namespace orvane::expr
