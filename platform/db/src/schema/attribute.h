// An attribute of a schema: what a field of that name holds in every relation.
#pragma once

#include "schema/field_format.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

// The numbers are those of dbBOOLEAN … in <orvane/db.h>.
enum class FieldType : std::int64_t {
    Boolean = 1,
    Integer = 2,
    Real = 3,
    Time = 4,
    Yearday = 5,
    String = 6,
    Dbptr = 142,
};

std::string_view type_name(FieldType type);

// Whether values of the type are whole numbers; whether they are numbers at all.
constexpr bool is_integer(FieldType type)
{
    return type == FieldType::Boolean || type == FieldType::Integer || type == FieldType::Yearday;
}
constexpr bool is_real(FieldType type)
{
    return type == FieldType::Real || type == FieldType::Time;
}
constexpr bool is_number(FieldType type)
{
    return is_integer(type) || is_real(type);
}

struct Attribute {
    std::string name;
    FieldType type = FieldType::String;
    std::int64_t width = 0; // bytes
    std::string format;     // as written in the schema
    FieldFormat parsed_format;
    std::string null; // as written in the schema
    std::string range;
    std::string units;
    std::string description;
    std::string detail;
    // Whether it says something about a record without telling which one: such fields are no plain elements
    // of inferred join keys.
    bool not_joined = false;

    // The null as a number, by type; 0 for text.
    std::int64_t null_integer = 0;
    double null_real = 0;
};

// The null text as it stands in a file: numbers to the right of the field, text to the left.
std::string null_field(const Attribute &attribute);

} // namespace orvane
