#include "row_records.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace {

using Mark = std::pair<std::size_t, std::int64_t>; // of a record's text, and the record

std::vector<Mark> marksOf(Dbptr table)
{
    std::int64_t count = 0;
    dbquery(table, dbRECORD_COUNT, &count);
    std::vector<Mark> marks;
    std::vector<char> text(1024);
    table.field = dbALL;
    for (table.record = 0; table.record < count; ++table.record) {
        std::int64_t length = dbget(table, text.data(), text.size());
        if (length >= static_cast<std::int64_t>(text.size())) {
            text.resize(static_cast<std::size_t>(length) + 1);
            length = dbget(table, text.data(), text.size());
        }
        if (length >= 0) {
            const std::string_view record(text.data(), static_cast<std::size_t>(length));
            marks.emplace_back(std::hash<std::string_view>()(record), table.record);
        }
    }
    std::sort(marks.begin(), marks.end());
    return marks;
}

} // namespace

std::vector<std::int64_t> recordsOfRows(Dbptr view, Dbptr table)
{
    const std::vector<Mark> rows = marksOf(view), records = marksOf(table);
    std::int64_t last = -1;
    for (const Mark &row : rows) {
        last = std::max(last, row.second);
    }
    std::vector<std::int64_t> result(static_cast<std::size_t>(last + 1), -1);
    auto record = records.begin();
    for (const Mark &row : rows) {
        while (record != records.end() && record->first < row.first) {
            ++record;
        }
        if (record != records.end() && record->first == row.first) {
            result[static_cast<std::size_t>(row.second)] = record->second;
            ++record;
        }
    }
    return result;
}
