#include "expression/value.h"

#include <array>

namespace orvane::expr {

namespace {

struct TypeRow {
    std::string_view word;
    std::string_view described;
    Storage storage;
    bool number;
};

// In the order of the enumeration.
constexpr std::array<TypeRow, 7> types = {{
    {"boolean", "a boolean", Storage::Integer, true},
    {"integer", "an integer", Storage::Integer, true},
    {"real", "a real number", Storage::Real, true},
    {"time", "a time", Storage::Real, true},
    {"yearday", "a yearday", Storage::Integer, true},
    {"text", "text", Storage::Text, false},
    {"rows", "rows of another view", Storage::Integer, false},
}};

const TypeRow &row(ValueType type)
{
    return types[static_cast<std::size_t>(type)];
}

} // namespace

Storage storage_of(ValueType type)
{
    return row(type).storage;
}
bool is_number(ValueType type)
{
    return row(type).number;
}
std::string_view described(ValueType type)
{
    return row(type).described;
}
std::string_view type_word(ValueType type)
{
    return row(type).word;
}

} // namespace orvane::expr
