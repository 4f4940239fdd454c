// Types and single values of the expression language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::expr {

enum class ValueType : std::uint8_t {
    Boolean, // 0 or 1
    Integer,
    Real,
    Time,    // epoch seconds
    Yearday, // yyyyddd
    Text,
    Rows, // rows of another view (dbptr): a field may have it, an expression can do nothing with it
};

// How values of a type are kept.
enum class Storage : std::uint8_t { Integer, Real, Text };

Storage storage_of(ValueType type);
bool is_number(ValueType type); // Boolean, Integer, Real, Time, Yearday

// "an integer", "a real number", … for messages; and the bare word for signatures.
std::string_view described(ValueType type);
std::string_view type_word(ValueType type);

// What a value is worth. A stored null has a value, which == and != compare; a missing one, the outcome of a
// computation that has none (1 / 0, sqrt(-1), null + 1), has not.
enum Presence : std::uint8_t { Present = 0, StoredNull = 1, Missing = 2 };

struct Value {
    ValueType type = ValueType::Integer;
    Presence presence = Present;
    std::int64_t integer = 0; // Boolean, Integer, Yearday
    double real = 0;          // Real, Time
    std::string text;
};

} // namespace orvane::expr
