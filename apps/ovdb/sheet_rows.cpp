#include "sheet_rows.h"

#include "json_text.h"
#include "long_work.h"
#include "qt_part.h"
#include "record_values.h"

#include <memory>
#include <utility>

namespace ovdb {

namespace {

constexpr std::int64_t most_rows = 1048576; // of a sheet
constexpr std::size_t most_columns = 16384;

// What the part is told of the columns; see apps/ovdb_qt/commands.h.
std::string column_lines(const std::vector<Column> &columns)
{
    std::string lines;
    for (const Column &column : columns) {
        char before = '[';
        for (const std::string &text :
             {column.name, std::to_string(column.type), std::to_string(column.width), column.null}) {
            lines += std::exchange(before, ',');
            append_json_string(text, lines);
        }
        lines += "]\n";
    }
    return lines + '\n';
}

} // namespace

void check_sheet_size(const Rows &rows, bool header)
{
    const std::int64_t most = most_rows - (header ? 1 : 0);
    if (rows.count > most)
        throw Failure(ExitCode::Failed,
                      std::to_string(rows.count) + " rows are more than the " + std::to_string(most) +
                          " that a spreadsheet holds; nothing was written. --limit takes the "
                          "first ones, --format csv all");
    if (columns_of(rows.table, rows.fields).size() > most_columns)
        throw Failure(ExitCode::Failed, "the rows have more columns than a spreadsheet holds");
}

void write_sheet(const Rows &rows, bool header, const std::string &path)
{
    const std::vector<Column> columns = columns_of(rows.table, rows.fields);
    QtPart part("cannot write the spreadsheet", {"sheet", path, header ? "header" : "no-header"});
    bool is_taken = part.send(column_lines(columns));
    if (is_taken && rows.count > 0) {
        RecordStream records(decoders_of(columns),
                             [&part](std::string_view bytes) { return part.send(bytes); });
        const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(records.open(), &std::fclose);
        const TextList fields(rows.fields);
        const Tbl *named = rows.fields.empty() ? nullptr : static_cast<const Tbl *>(fields);
        is_taken = dbselect(rows.table, named, stream.get(), "", 0) >= 0;
    }
    // Where it went away its own words say why; else it is the database that can't be read.
    if (!is_taken) {
        const std::string reason = taken_log();
        part.finish();
        stop_if_interrupted();
        throw Failure(ExitCode::Failed, "cannot write the rows: " + reason);
    }
    part.finish();
}

} // namespace ovdb
