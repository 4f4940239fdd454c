// Short forms of what the tests of operations do all the time.
#pragma once

#include "db/opened.h"
#include "support/temporary_database.h"

#include <memory>
#include <string>
#include <vector>

// A list for a call, which lives as long as the object.
class Names
{
public:
    Names(std::initializer_list<const char *> names)
        : Names(std::vector<std::string>(names.begin(), names.end()))
    {
    }
    explicit Names(std::vector<std::string> names) : names_(std::move(names)), list_(newtbl(0), &release)
    {
        for (std::string &name : names_)
            pushtbl(list_.get(), name.data());
    }
    operator Tbl *() const { return list_.get(); }

private:
    static void release(Tbl *list) { freetbl(list, nullptr); }

    std::vector<std::string> names_;
    std::unique_ptr<Tbl, void (*)(Tbl *)> list_;
};

// The texts of a field in all rows, without blanks at their ends.
inline std::vector<std::string> column(Dbptr table, const char *field)
{
    std::vector<std::string> texts;
    Dbptr at = dblookup(table, "", "", field, "");
    const int64_t rows = integer(table, dbRECORD_COUNT);
    for (at.record = 0; at.record < rows; ++at.record) {
        std::string cell = get(at);
        const size_t first = cell.find_first_not_of(' ');
        cell = first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1);
        texts.push_back(cell);
    }
    return texts;
}

// The rows that a bundle stands for, as "first-end".
inline std::string bundle(Dbptr table, int64_t record)
{
    Dbptr at = dblookup(table, "", "", "bundle", "");
    at.record = record;
    DbValue value{};
    int64_t first = -1;
    int64_t end = -1;
    if (dbgetv(at, nullptr, &value) < 0 || value.type != dbDBPTR ||
        dbget_range(value.dbptr, &first, &end) < 0)
        return "(failed)";
    return std::to_string(first) + "-" + std::to_string(end);
}
