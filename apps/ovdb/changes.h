// What the commands that change a table have in common.
#pragma once

#include "library.h"

#include <string>
#include <string_view>

namespace ovdb {

// The table that the database was opened at; fails where none was named, or a view.
Dbptr table_to_change(const Database &database, std::string_view command);

// "1 record", "2 records".
std::string records_text(std::int64_t count);

// Puts the text into the field of the record; false with the reason in the error log.
bool put_text(Dbptr record, const std::string &field, std::string text);

} // namespace ovdb
