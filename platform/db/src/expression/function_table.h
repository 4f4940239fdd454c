// The functions of the language, one row each way of calling them. Binding, help and the reference are made
// from these rows; a new function is a new row.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "expression/bound_expression.h"

namespace orvane::expr {

enum class Parameter : std::uint8_t {
    Integer, // a boolean, an integer or a yearday
    Real,    // any number
    Time,    // a time or a number; a yearday is its first second; text is read as a time
    Text,
    Printable, // text, or a number but a time, which becomes text
    Any,
};

enum class NullRule : std::uint8_t {
    Propagates, // null when an argument is
    Answers,    // has a value for null arguments, too
};

enum class Build : std::uint8_t {
    Mapped,   // the kernel over the converted arguments
    NullTest, // isnull
    Extreme,  // min, max: the kernels over arguments of a common type
    Now,
};

struct Function {
    std::string_view name;
    std::string_view signature; // with the result: "abs(x: real) → real"
    std::string_view group;
    std::string_view help; // one or several sentences
    Build build = Build::Mapped;
    std::array<Parameter, 4> parameters{}; // the last is that of all further arguments
    std::size_t least = 0;                 // arguments
    std::size_t most = 0;
    ValueType result = ValueType::Real; // but of Extreme
    NullRule null_rule = NullRule::Propagates;
    Kernel kernel = nullptr;
    Kernel other_kernel = nullptr; // of Extreme: for integers
};

// By groups; rows of one name stand together, to be tried in order.
std::span<const Function> functions();

// The rows of one name; empty when there is none.
std::span<const Function> functions_named(std::string_view name);

// The names, each once, in order of the table.
std::vector<std::string_view> function_names();

} // namespace orvane::expr
