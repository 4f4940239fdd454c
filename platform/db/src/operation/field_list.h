// Names of fields to fields.
#pragma once

#include "table/table.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// The place of a field by its name.
Result<int> named_field(const Table &table, int standing_on, std::string_view name);

// The fields of the table by names, in order; a name given twice counts once.
Result<std::vector<int>> named_fields(const Table &table, int standing_on,
                                      std::span<const std::string> names);

} // namespace orvane
