// The text of a saved view after its head: a line for each row and bundle, and the line with the checksum.
#pragma once

#include "saved/line_reader.h"
#include "saved/saved_head.h"
#include "view/view.h"
#include "work/work.h"

#include <functional>
#include <vector>

namespace orvane {

// The rows of one part: of a view a column for each member; of a grouped view one column, as GroupedView has
// its firsts; of a table none.
using SavedColumns = std::vector<RowNumbers>;

// Reads the lines of the head and what they say. `schema` as for read_saved_head; `head_text`, if it isn't
// null, gets what that takes.
Result<SavedHead> read_head_lines(LineReader &lines, const Schema *schema, std::string *head_text = nullptr);

// Reads what follows the head, up to the end of the text, part by part. `work`, if there is one, is asked
// whether to stop.
Result<std::vector<SavedColumns>> read_saved_rows(LineReader &lines, const SavedHead &head, Work *work);

// The last line, without its line feed: "end 1c291ca3".
std::string end_line(const Checksum &checksum);

// Takes text that is written.
using TextSink = std::function<Status(std::string_view)>;

// The rows of one part, where they lie: a column for each member. A null column stands for the numbers from 0
// on.
struct RowColumnsToSave {
    std::vector<const RowNumber *> columns;
};

// Writes the whole text. `rows` has an element for each part; that of bundles has their firsts.
Status write_saved_view(const SavedHead &head, const std::vector<RowColumnsToSave> &rows,
                        const TextSink &sink, Work &work);

} // namespace orvane
