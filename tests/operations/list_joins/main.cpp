// Writes docs/joins.md: by which keys every pair of tables of schema css3.0 joins. list_joins [--check FILE]
//
// With --check it compares what it would write with a file and says what is different.

#include "support/temporary_database.h"

#include <orvane/db.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char head[] = R"(# How the tables of css3.0 join

The keys by which two tables join when none are named, for every pair of tables that have some. This file is written by
the program `list_joins` (`build/…/bin/list_joins > docs/joins.md`), and a test fails when it is not what the program
writes.

The keys are the first of these that fits whole: the right table's primary key, its alternate key; the left table's
primary key, its alternate key; the id that either table defines; a foreign key; at last all fields that both have, but
for the timestamp and remarks. A range such as `ondate::offdate` meets the same range where they overlap, or a field
whose value lies in it. A field that begins or ends a range on one side is not compared with a plain field there.

The schema names fields that are not joined (`not_joined`), such as `time`, `lat` and `auth`: equal values of them don't
relate records, so they count only where they lie in a range. The id of a remark leads to the remark and to nothing else.

Some tables are joined by the station alone, because one of them has no time: `assoc` with `site` gives every epoch of the
station. Joined with `arrival` first, the time of the arrival decides.

Where the keys differ between the sides they are written `left = right`. Joining the other way round gives the same pairs
of records unless the line says otherwise.

)";

std::vector<std::string> textsOf(Tbl *list)
{
    std::vector<std::string> texts;
    for (int64_t i = 0; i < maxtbl(list); ++i)
        texts.emplace_back(static_cast<const char *>(gettbl(list, i)));
    freetbl(list, free);
    return texts;
}

// "sta, time = ondate::offdate"; empty without keys.
std::string keysOf(Dbptr left, Dbptr right)
{
    Tbl *ofLeft = nullptr;
    Tbl *ofRight = nullptr;
    if (dbfind_join_keys(left, right, &ofLeft, &ofRight) < 0) {
        elog_clear();
        return {};
    }
    const auto leftKeys = textsOf(ofLeft);
    const auto rightKeys = textsOf(ofRight);
    std::string text;
    for (size_t i = 0; i < leftKeys.size(); ++i) {
        text += (i > 0 ? ", " : "") + leftKeys[i];
        if (leftKeys[i] != rightKeys[i])
            text += " = " + rightKeys[i];
    }
    return text;
}

std::string turned(const std::string &keys)
{
    std::string out;
    std::istringstream parts(keys);
    for (std::string part; std::getline(parts, part, ',');) {
        part = part.substr(part.find_first_not_of(' '));
        if (const size_t equal = part.find(" = "); equal != std::string::npos)
            part = part.substr(equal + 3) + " = " + part.substr(0, equal);
        out += (out.empty() ? "" : ", ") + part;
    }
    return out;
}

std::string document()
{
    const auto files = TemporaryDatabase::ofPublicStandard();
    Dbptr db = dbinvalid();
    if (dbopen_database(files->path().c_str(), "r", &db) < 0)
        throw std::runtime_error("cannot open a database of css3.0");
    Tbl *list = nullptr;
    dbquery(db, dbSCHEMA_TABLES, &list);
    const std::vector<std::string> names = textsOf(list);
    std::vector<Dbptr> tables;
    for (const std::string &name : names)
        tables.push_back(dblookup(db, "", name.c_str(), "", ""));
    std::string text = head;
    for (size_t left = 0; left < names.size(); ++left) {
        std::string lines;
        for (size_t right = 0; right < names.size(); ++right) {
            const std::string keys = left == right ? "" : keysOf(tables[left], tables[right]);
            if (keys.empty())
                continue;
            const std::string back = keysOf(tables[right], tables[left]);
            lines += "| " + names[right] + " | " + keys +
                     (turned(back) == keys ? "" : "; the other way round " + turned(back)) + " |\n";
        }
        if (lines.empty())
            lines = "| (none) | |\n";
        text += "## " + names[left] + "\n\n| with | keys |\n|---|---|\n" + lines + "\n";
    }
    OVdbclose(db);
    text.pop_back();
    return text;
}

int check(const std::string &made, const char *path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string kept{std::istreambuf_iterator<char>(file), {}};
    if (kept == made)
        return 0;
    std::istringstream keptLines(kept);
    std::istringstream madeLines(made);
    std::string keptLine, madeLine;
    int line = 0;
    do {
        keptLine.clear();
        madeLine.clear();
        ++line;
        const bool more = static_cast<bool>(std::getline(keptLines, keptLine));
        if (!std::getline(madeLines, madeLine) && !more)
            break;
    } while (keptLine == madeLine);
    std::cerr << path << ":" << line << ": is not what list_joins writes any more\n- " << keptLine << "\n+ "
              << madeLine << "\n";
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const std::string made = document();
        if (argc == 3 && std::string(argv[1]) == "--check")
            return check(made, argv[2]);
        std::cout << made;
        return std::cout.flush() ? 0 : 1;
    } catch (const std::exception &error) {
        std::cerr << "list_joins: " << error.what() << "\n";
        return 1;
    }
}
