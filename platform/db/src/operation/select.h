// Rows of a table or view as lines of text.
#pragma once

#include "operation/operand.h"
#include "operation/text_form.h"
#include "storage/text_stream.h"

#include <span>
#include <string>
#include <vector>

namespace orvane {

// A field that is written, and what its column is called.
struct SelectedField {
    int field;
    std::string name;
};

// The fields by names, in the order given and as often as given. A list that is that of all fields of the
// table means each of them, also where a view has several of one name; these are then called as they are
// looked up: "sta", "site.sta".
Result<std::vector<SelectedField>> selected_fields(const Table &table, int standing_on,
                                                   std::span<const std::string> names);
// All fields of the table.
std::vector<SelectedField> all_fields(const Table &table);

// Writes the line of the names.
Status write_names(const Table &table, std::span<const SelectedField> fields, const TextForm &form,
                   TextStream &stream);

// The rows [first, end) of a table.
struct RowRange {
    std::int64_t first = 0;
    std::int64_t end = 0;
};

// Writes a line for each of the rows. Tables that change after this has begun to write are read as they were
// opened; records that are gone end it.
Status write_rows(const Operand &operand, const RowRange &rows, std::span<const SelectedField> fields,
                  const TextForm &form, TextStream &stream, Work &work);

} // namespace orvane
