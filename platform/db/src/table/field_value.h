// Reading the text of a field as a value of its type.
#pragma once

#include "schema/attribute.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

// The text without blanks at either end, and without those at its end.
std::string_view trimmed(std::string_view text);
std::string_view trimmed_right(std::string_view text);

// A whole number, or a number, that stands anywhere in the text. None for anything else, also for
// "nan" and "inf" and what is beyond the type.
std::optional<std::int64_t> decode_integer(std::string_view text);
std::optional<double> decode_real(std::string_view text);
// Epoch seconds, or a date in words.
std::optional<double> decode_time(std::string_view text);

// A value by its field's type.
struct FieldValue {
    FieldType type = FieldType::String;
    std::int64_t integer = 0;            // boolean, integer, yearday
    double real = 0;                     // real, time
    std::string_view text;               // string: without blanks at its end; part of what was decoded
    std::array<std::int64_t, 4> dbptr{}; // database, table, field, record
};

// The value of a field's text, or none when it isn't one of the attribute's type. The null is one always.
std::optional<FieldValue> decode_field(const Attribute &attribute, std::string_view text);

// Whether the text is the attribute's null: numbers are compared by value, so that fewer decimals than the
// null is written with make no difference.
bool is_null_field(const Attribute &attribute, std::string_view text);

} // namespace orvane
