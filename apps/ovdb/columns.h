// The fields that are written: what they are called, how wide they stand, of what type they are.
#pragma once

#include "library.h"

#include <string>
#include <vector>

namespace ovdb {

struct Column {
    std::string name; // as it is looked up: "sta", or "site.sta" where the table has another one before it
    std::string table;
    std::int64_t type;
    std::size_t width;
    std::string null;
};

// All fields of the table or view, or those that are named. Throws where there is no such field.
std::vector<Column> columns_of(Dbptr table, const std::vector<std::string> &names);

} // namespace ovdb
