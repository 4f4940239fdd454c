// Short forms of what the tests of saved views and new databases do all the time.
#pragma once

#include "operations/derived.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// What the library told by notices while the object lives.
class Notices
{
public:
    Notices() { elog_set_notice_hook(&take, this); }
    ~Notices() { elog_set_notice_hook(nullptr, nullptr); }
    Notices(const Notices &) = delete;
    Notices &operator=(const Notices &) = delete;

    std::string text;

private:
    static void take(const char *text, void *context)
    {
        static_cast<Notices *>(context)->text.append(text).append("\n");
    }
};

// A stream in memory.
class Stream
{
public:
    explicit Stream(std::string_view text = "") : file_(std::tmpfile(), &std::fclose)
    {
        std::fwrite(text.data(), 1, text.size(), file_.get());
        std::rewind(file_.get());
    }
    operator std::FILE *() const { return file_.get(); }

    std::string text() const
    {
        std::rewind(file_.get());
        std::string all;
        char piece[4096];
        while (const size_t got = std::fread(piece, 1, sizeof piece, file_.get()))
            all.append(piece, got);
        std::rewind(file_.get());
        return all;
    }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
};

// The view as a text that is equal for equal views: fields, rows, the rows of bundles, operations.
inline std::string described(Dbptr view, bool with_creation = true)
{
    std::string out;
    Dbptr at = dblookup(view, "", "", "dbALL", "");
    const int64_t fields = integer(view, dbFIELD_COUNT);
    for (at.field = 0; at.field < fields; ++at.field)
        out += text(at, dbFIELD_NAME) + " ";
    out += "\n";
    const int64_t rows = integer(view, dbRECORD_COUNT);
    for (int64_t row = 0; row < rows; ++row) {
        at.record = row;
        at.field = dbALL;
        out += get(at) + "\n";
        for (at.field = 0; at.field < fields; ++at.field) {
            DbValue value{};
            int64_t first = 0;
            int64_t end = 0;
            if (integer(at, dbFIELD_TYPE) != dbDBPTR || dbgetv(at, nullptr, &value) < 0 ||
                dbget_range(value.dbptr, &first, &end) < 0)
                continue;
            Dbptr inner = value.dbptr;
            inner.field = dbALL;
            for (inner.record = first; inner.record < end; ++inner.record)
                out += "    " + get(inner) + "\n";
        }
    }
    elog_clear(); // null records have no bundles
    return with_creation ? out + text(view, dbTABLE_CREATION) + "\n" : out;
}

inline bool exists(const std::string &path)
{
    return std::filesystem::exists(path);
}

inline std::vector<std::string> names_in(const std::string &folder)
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}
