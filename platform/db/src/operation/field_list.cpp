#include "operation/field_list.h"

#include "base/concat.h"
#include "base/near_names.h"

#include <algorithm>

namespace orvane {

Result<int> named_field(const Table &table, int standing_on, std::string_view name)
{
    const int field = table.field_index(name, standing_on);
    if (field >= 0)
        return field;
    std::vector<std::string_view> known;
    for (const TableField &other : table.fields())
        known.push_back(other.attribute->name);
    return Status(Code::NotFound, concat("no field '", name, "' in ", table.is_view() ? "view " : "table ",
                                         table.name(), near_names_hint(name, known)));
}

Result<std::vector<int>> named_fields(const Table &table, int standing_on, std::span<const std::string> names)
{
    if (names.empty())
        return Status(Code::Argument, "no fields are given");
    std::vector<int> fields;
    for (const std::string &name : names) {
        const auto field = named_field(table, standing_on, name);
        if (!field.ok())
            return field.status();
        if (std::find(fields.begin(), fields.end(), *field) == fields.end())
            fields.push_back(*field);
    }
    return fields;
}

} // namespace orvane
