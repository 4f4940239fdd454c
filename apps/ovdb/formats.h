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
    // Rows go to a stream; a sheet and a view are files; a database is several.
    enum class Kind { Lines, Objects, Sheet, View, Database };

    std::string_view name;
    Kind kind;
    bool has_header;            // when nothing else is said
    std::string_view extension; // of files in this form; empty: none tells it
    const char *separator;      // of lines
    int flag;                   // of dbselect, of lines

    bool is_stream() const { return kind == Kind::Lines || kind == Kind::Objects; }
};

const Format *find_format(std::string_view name);
// By the extension of a file's name; null where that tells none.
const Format *format_of_file(std::string_view path);
const Format &default_format();
std::vector<std::string_view> stream_format_names();
std::vector<std::string_view> format_names();

// Writes rows of a table or view in a form that is a stream.
void write_rows(const Rows &rows, const Format &format, bool header, std::FILE *out);
// Writes a list that the program made itself; as text with its columns aligned.
void write_listing(const Listing &listing, const Format &format, bool header, std::FILE *out);

} // namespace ovdb
