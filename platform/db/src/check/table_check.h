// Checks one table's file by itself: its lines, its fields, its keys.
#pragma once

#include "check/database_check.h"
#include "storage/settled_file.h"

#include <functional>
#include <memory>

namespace orvane {

// A table's file while it is checked.
struct OpenTable {
    BaseTable *table = nullptr;
    std::unique_ptr<RandomAccessFile> file; // null: there is none, or none that could be read
    FileState state;
    CheckedFile checked;
    std::int64_t marked = 0;
    std::int64_t greatest_id = 0; // of the id that it defines
};

// Opens a table's file; what it can't be opened for is an error of it.
OpenTable open_for_check(BaseTable &table, FileSystem &files, const CheckOptions &options,
                         Findings &findings);

// Reads the file once: whether it is records and nothing else, and what their fields hold. Fills in what the
// table has of records.
Status check_lines_and_fields(OpenTable &open, FileSystem &files, Findings &findings, Work &work);

// A change that a killed program left half done.
void check_undo_note(const OpenTable &open, FileSystem &files, Findings &findings);

// Mends what `findings` have of the file, or says how. Answers the number of errors that are none any more.
std::int64_t repair_file(OpenTable &open, const CheckOptions &options, Findings &findings, Work &work);

} // namespace orvane
