#include "schema/attribute.h"

namespace orvane {

std::string_view type_name(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return "boolean";
    case FieldType::Integer:
        return "integer";
    case FieldType::Real:
        return "real";
    case FieldType::Time:
        return "time";
    case FieldType::Yearday:
        return "yearday";
    case FieldType::String:
        return "string";
    case FieldType::Dbptr:
        return "dbptr";
    }
    return "unknown";
}

std::string null_field(const Attribute &attribute)
{
    const auto width = static_cast<std::size_t>(attribute.width);
    if (attribute.null.size() >= width)
        return attribute.null.substr(0, width);
    const std::string blanks(width - attribute.null.size(), ' ');
    return is_number(attribute.type) ? blanks + attribute.null : attribute.null + blanks;
}

} // namespace orvane
