// Short forms of what the tests of the C interface do all the time.
#pragma once

#include <orvane/db.h>
#include <orvane/util.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

// The error log, which is empty afterwards.
inline std::string take_log()
{
    char *text = elog_string(0);
    std::string log = text ? text : "";
    free(text);
    elog_clear();
    return log;
}

// A database that is closed with the object.
class Opened
{
public:
    explicit Opened(const std::string &path, const char *permissions = "r")
    {
        elog_clear();
        if (dbopen_database(path.c_str(), permissions, &pointer) < 0)
            throw std::runtime_error("cannot open " + path + ": " + take_log());
    }
    ~Opened() { OVdbclose(pointer); }
    Opened(const Opened &) = delete;
    Opened &operator=(const Opened &) = delete;

    Dbptr table(const char *name) const { return dblookup(pointer, "", name, "dbALL", "dbALL"); }
    Dbptr field(const char *table_name, const char *field_name, int64_t record = dbALL) const
    {
        Dbptr at = dblookup(pointer, "", table_name, field_name, "");
        at.record = record;
        return at;
    }
    Dbptr record(const char *table_name, int64_t number) const
    {
        Dbptr at = table(table_name);
        at.record = number;
        return at;
    }

    Dbptr pointer;
};

inline int64_t integer(Dbptr db, int code)
{
    int64_t answer = -1;
    return dbquery(db, code, &answer) < 0 ? -999 : answer;
}

inline std::string text(Dbptr db, int code)
{
    const char *answer = nullptr;
    return dbquery(db, code, &answer) < 0 || !answer ? "(failed)" : answer;
}

// The texts of a list, which is released.
inline std::vector<std::string> texts_of(Tbl *list)
{
    std::vector<std::string> found;
    for (int64_t i = 0; i < maxtbl(list); ++i)
        found.emplace_back(static_cast<const char *>(gettbl(list, i)));
    freetbl(list, free);
    return found;
}

inline std::vector<std::string> list(Dbptr db, int code)
{
    Tbl *answer = nullptr;
    if (dbquery(db, code, &answer) < 0)
        return {"(failed)"};
    return texts_of(answer);
}

// What dbget answers, or "(CODE)".
inline std::string get(Dbptr db)
{
    std::string buffer(4096, '\0');
    const int64_t got = dbget(db, buffer.data(), buffer.size());
    if (got < 0)
        return "(" + std::to_string(got) + ")";
    buffer.resize(static_cast<size_t>(got));
    return buffer;
}
