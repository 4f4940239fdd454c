// The layout of a table, for the programs that write large ones: as the schema has it, asked from the
// library.
#pragma once

#include <orvane/db.h>
#include <orvane/util.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace bench {

struct Column {
    std::string name;
    std::string format;
    std::string null;
    int64_t type = 0;
    int64_t width = 0;
};

[[noreturn]] inline void fail(const std::string &what)
{
    std::unique_ptr<char, decltype(&std::free)> log(elog_string(0), std::free);
    std::fprintf(stderr, "%s\n%s\n", what.c_str(), log ? log.get() : "");
    std::exit(1);
}

template <typename Answer>
Answer answer_to(Dbptr at, int code)
{
    Answer answer{};
    if (dbquery(at, code, &answer) < 0)
        fail("the schema does not answer");
    return answer;
}

inline std::vector<Column> columns_of(Dbptr table)
{
    std::vector<Column> columns;
    for (int64_t field = 0; field < answer_to<int64_t>(table, dbFIELD_COUNT); ++field) {
        Dbptr at = table;
        at.field = field;
        columns.push_back({answer_to<const char *>(at, dbFIELD_NAME),
                           answer_to<const char *>(at, dbFIELD_FORMAT), answer_to<const char *>(at, dbNULL),
                           answer_to<int64_t>(at, dbFIELD_TYPE), answer_to<int64_t>(at, dbFIELD_SIZE)});
    }
    return columns;
}

// Writes a descriptor of the schema css3.0 and opens what it describes.
inline Dbptr new_database(const std::string &path, const std::string &description)
{
    std::FILE *descriptor = std::fopen(path.c_str(), "w");
    if (descriptor == nullptr)
        fail("cannot write " + path);
    std::fprintf(descriptor,
                 "schema: css3.0\ndbpath: [.]\nlocks: local\nidserver: \"\"\n"
                 "description: %s\ndetail: Generated values, for measurements only.\n",
                 description.c_str());
    std::fclose(descriptor);
    Dbptr db;
    if (dbopen_database(path.c_str(), "r", &db) < 0)
        fail("cannot open " + path);
    return db;
}

} // namespace bench
