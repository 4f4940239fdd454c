// Rows as a spreadsheet.
#pragma once

#include "formats.h"

#include <string>

namespace ovdb {

// Fails where a sheet has not room for them; to be asked before anything is written.
void check_sheet_size(const Rows &rows, bool header);

// Writes a new file at the path.
void write_sheet(const Rows &rows, bool header, const std::string &path);

} // namespace ovdb
