#include "operation/field_list.h"

#include "base/concat.h"
#include "base/near_names.h"

#include <algorithm>

namespace orvane {

Result<std::vector<int>> named_fields(const Table &table, int standing_on, std::span<const std::string> names)
{
    if (names.empty())
        return Status(Code::Argument, "no fields are given");
    std::vector<int> fields;
    for (const std::string &name : names) {
        const int field = table.field_index(name, standing_on);
        if (field < 0) {
            std::vector<std::string_view> known;
            for (const TableField &other : table.fields())
                known.push_back(other.attribute->name);
            return Status(Code::NotFound,
                          concat("no field '", name, "' in ", table.is_view() ? "view " : "table ",
                                 table.name(), near_names_hint(name, known)));
        }
        if (std::find(fields.begin(), fields.end(), field) == fields.end())
            fields.push_back(field);
    }
    return fields;
}

} // namespace orvane
