// Calls of functions: which row of the table, and its arguments in the types that it wants.
#include <algorithm>

#include "base/concat.h"
#include "base/near_names.h"
#include "expression/binder.h"
#include "expression/comparison_tests.h"
#include "expression/conversion_kernels.h"

namespace orvane::expr {

namespace {

bool accepts(Parameter parameter, ValueType type)
{
    switch (parameter) {
    case Parameter::Integer:
        return is_number(type) && storage_of(type) == Storage::Integer;
    case Parameter::Real:
        return is_number(type);
    case Parameter::Text:
        return type == ValueType::Text;
    case Parameter::Printable:
        return type != ValueType::Time;
    case Parameter::Time:
    case Parameter::Any:
        return true;
    }
    return false;
}

std::string_view described(Parameter parameter)
{
    switch (parameter) {
    case Parameter::Integer:
        return "an integer";
    case Parameter::Real:
        return "a number";
    case Parameter::Text:
        return "text";
    case Parameter::Time:
        return "a time";
    case Parameter::Printable:
        return "text or a number; strtime(…) makes text of a time";
    case Parameter::Any:
        return "a value";
    }
    return {};
}

Parameter parameter_at(const Function &function, std::size_t index)
{
    return function.parameters[std::min(index, function.parameters.size() - 1)];
}

bool takes_count(const Function &function, std::size_t count)
{
    return count >= function.least && count <= function.most;
}

// The first argument that the function does not take, or their number.
std::size_t first_misfit(const Function &function, const std::vector<BoundNodePtr> &arguments)
{
    std::size_t index = 0;
    while (index < arguments.size() && accepts(parameter_at(function, index), arguments[index]->type))
        ++index;
    return index;
}

std::string signatures(std::span<const Function> rows)
{
    std::vector<std::string_view> written;
    for (const Function &row : rows)
        written.push_back(row.signature);
    return joined(written, " or ");
}

} // namespace

BoundNodePtr Binder::unknown_function(const ParsedNode &parsed)
{
    if (scope_.find({}, parsed.text))
        return fail(concat(quoted(parsed.text), " is a field, no function"), parsed.place);
    return fail(
        concat("unknown function ", quoted(parsed.text), near_names_hint(parsed.text, function_names())),
        parsed.place);
}

BoundNodePtr Binder::call(const ParsedNode &parsed)
{
    const std::span<const Function> rows = functions_named(parsed.text);
    if (rows.empty())
        return unknown_function(parsed);
    const std::size_t count = parsed.children.size();
    if (std::none_of(rows.begin(), rows.end(),
                     [count](const Function &row) { return takes_count(row, count); }))
        return fail(concat(count, count == 1 ? " argument" : " arguments", " to ", parsed.text,
                           "(…); expected ", signatures(rows)),
                    parsed.place);
    std::vector<BoundNodePtr> arguments;
    for (const auto &child : parsed.children) {
        arguments.push_back(value(*child));
        if (!arguments.back())
            return nullptr;
    }
    const Function *nearest = nullptr;
    for (const Function &row : rows) {
        if (!takes_count(row, count))
            continue;
        if (first_misfit(row, arguments) == count)
            return built(row, parsed, std::move(arguments));
        nearest = &row;
    }
    const std::size_t misfit = first_misfit(*nearest, arguments);
    return fail(concat("argument ", misfit + 1, " of ", nearest->signature, ": expected ",
                       described(parameter_at(*nearest, misfit)), "; ", shown(*arguments[misfit])),
                arguments[misfit]->place);
}

BoundNodePtr Binder::converted(Parameter parameter, BoundNodePtr argument)
{
    const Place place = argument->place;
    switch (parameter) {
    case Parameter::Real:
        return to_real(std::move(argument));
    case Parameter::Time:
        return to_time(std::move(argument));
    case Parameter::Printable:
        if (argument->type == ValueType::Text)
            return argument;
        return storage_of(argument->type) == Storage::Integer
                   ? make_.call(integer_to_text, ValueType::Text, {std::move(argument)}, place)
                   : make_.call(real_to_text, ValueType::Text, {std::move(argument)}, place);
    default:
        return argument;
    }
}

BoundNodePtr Binder::built(const Function &function, const ParsedNode &parsed,
                           std::vector<BoundNodePtr> arguments)
{
    if (function.build == Build::Now)
        return make_.now(parsed.extent);
    if (function.build == Build::NullTest) {
        const TestKernel test = null_test(storage_of(arguments[0]->type));
        return make_.test(test, std::move(arguments), parsed.extent);
    }
    if (function.build == Build::Extreme)
        return extreme(function, parsed, std::move(arguments));
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        arguments[i] = converted(parameter_at(function, i), std::move(arguments[i]));
        if (!arguments[i])
            return nullptr;
    }
    return make_.call(function.kernel, function.result, std::move(arguments), parsed.extent);
}

BoundNodePtr Binder::extreme(const Function &function, const ParsedNode &parsed,
                             std::vector<BoundNodePtr> arguments)
{
    for (const BoundNodePtr &argument : arguments)
        if (!is_number(argument->type))
            return fail(concat(function.name, "(…) takes numbers and times; ", shown(*argument)),
                        argument->place);
    if (!unify(arguments))
        return fail(concat(function.name,
                           "(…) takes no times with yeardays; epoch(…) is the time at which a day begins"),
                    parsed.place);
    const ValueType type = arguments.front()->type;
    const bool reals = storage_of(type) == Storage::Real;
    return make_.call(reals ? function.kernel : function.other_kernel, type, std::move(arguments),
                      parsed.extent);
}

} // namespace orvane::expr
