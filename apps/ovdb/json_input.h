// Rows as JSON objects, one a line; also as 'select' writes them, in an array over several lines.
#pragma once

#include "row_input.h"

namespace ovdb {

std::unique_ptr<RowInput> json_rows(std::FILE *file, std::vector<Column> columns);

} // namespace ovdb
