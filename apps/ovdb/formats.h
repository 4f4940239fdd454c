// The forms in which rows are written, one row each. A new form is a new row.
#pragma once

#include "library.h"
#include "listing.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace ovdb {

// Rows to be written: those that a pointer stands for, none where `count` is 0.
struct Rows {
    Dbptr table;
    std::int64_t count;
    std::vector<std::string> fields; // empty: all
};

struct Format {
    std::string_view name;
    bool has_header;       // when nothing else is said
    const char *separator; // null: the form is not one of lines of fields
    int flag;              // of dbselect
};

const Format *find_format(std::string_view name);
const Format &default_format();
std::vector<std::string_view> format_names();

// Writes rows of a table or view.
void write_rows(const Rows &rows, const Format &format, bool header, std::FILE *out);
// Writes a list that the program made itself; as text with its columns aligned.
void write_listing(const Listing &listing, const Format &format, bool header, std::FILE *out);

} // namespace ovdb
