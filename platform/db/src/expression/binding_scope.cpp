#include "expression/binding_scope.h"

namespace orvane::expr {

std::optional<std::size_t> FieldListScope::find(std::string_view table, std::string_view name) const
{
    if (!table.empty())
        for (std::size_t column = 0; column < fields_.size(); ++column)
            if (fields_[column].table == table && fields_[column].name == name)
                return column;
    if (!table.empty() && (alias_.empty() || table != alias_))
        return std::nullopt;
    if (preferred_ && *preferred_ < fields_.size() && fields_[*preferred_].name == name)
        return preferred_;
    for (std::size_t column = 0; column < fields_.size(); ++column)
        if (fields_[column].name == name)
            return column;
    return std::nullopt;
}

} // namespace orvane::expr
