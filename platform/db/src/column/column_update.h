// Keeps decoded columns true when one record of their file is changed or appended.
#pragma once

#include "column/column.h"
#include "schema/relation.h"
#include "table/record_run.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace orvane {

// Decodes a field of a record's line into the column, at the record's number or behind the last record. False
// when the column can't take it: it is to be decoded anew.
bool update_column(Column &column, const RelationField &field, std::string_view line, std::int64_t number);

// The same for records that were changed: runs of them among the lines of neighbouring records from `first`
// on.
bool update_column(Column &column, const RelationField &field, std::string_view lines,
                   std::int64_t record_size, std::int64_t first, std::span<const RecordRun> runs);

} // namespace orvane
