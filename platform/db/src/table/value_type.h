// The types of fields as the expression language has them.
#pragma once

#include "expression/value.h"
#include "schema/attribute.h"

namespace orvane {

constexpr expr::ValueType value_type(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return expr::ValueType::Boolean;
    case FieldType::Integer:
        return expr::ValueType::Integer;
    case FieldType::Real:
        return expr::ValueType::Real;
    case FieldType::Time:
        return expr::ValueType::Time;
    case FieldType::Yearday:
        return expr::ValueType::Yearday;
    case FieldType::String:
        return expr::ValueType::Text;
    case FieldType::Dbptr:
        return expr::ValueType::Rows;
    }
    return expr::ValueType::Rows;
}

} // namespace orvane
