// The head of a saved view: what its rows are rows of. docs/formats/saved-view.md has the form.
#pragma once

#include "base/status.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// What a file of this kind begins with.
constexpr std::string_view saved_view_mark = "saved-view: ";
constexpr std::string_view end_of_head = "---";

enum class PartKind { Table, Rows, Bundles };

// One of the tables that a saved view is made of: base tables, views, grouped views. A part stands on parts
// before it.
struct SavedPart {
    PartKind kind = PartKind::Table;
    std::string name;
    std::int64_t count = 0;            // records, rows or bundles
    std::int64_t modified = 0;         // of a table's file, nanoseconds since 1970
    bool has_file = false;             // of a table
    std::vector<int> members;          // of rows: parts
    int source = -1;                   // of bundles: the part in whose rows they stand
    std::vector<int> keys;             // of bundles: fields of the source, by their places in it
    std::string creation;              // of rows and bundles
    std::vector<std::string> fields{}; // "table.field"
};

struct SavedHead {
    std::string database; // the path of the database that it was saved from; empty: not known
    std::string schema;
    std::vector<SavedPart> parts; // the last one is the view

    const SavedPart &view() const { return parts.back(); }
};

class Schema;

// The head as text, from the mark up to the line that ends it.
std::string saved_head_text(const SavedHead &head);

// Reads the text of a head, without the line that ends it, against the schema of the database that it is to
// be a view of; without one it reads no more than what the database is. `file` names it in messages.
Result<SavedHead> read_saved_head(const std::string &text, const std::string &file, const Schema *schema);

} // namespace orvane
