// The database library's C interface as C++ likes it: its texts and lists as values, its failures as
// exceptions.
#pragma once

#include "failure.h"

#include <orvane/db.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ovdb {

// What the error log has; it is empty afterwards.
std::string taken_log();

// Fails with what the library's error log says, as "WHERE: what and why" and a line with the remedy. Ends as
// interrupted instead where the interrupt key was pressed.
[[noreturn]] void fail_with_log(std::string_view where, std::string_view remedy);

// Prints what a call that succeeded left in the error log.
void pass_on_remarks();

// Prints "ovdb: note: …" on standard error, where it doesn't mix with the rows.
void note(std::string_view text);
void pass_on_notices();

class Database
{
public:
    enum class Access { Read, Change };

    // Opens "DB" or "DB.TABLE"; to read, for "-" the view that standard input has, and its database.
    explicit Database(const std::string &path, Access access = Access::Read);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // To the table, where one was named.
    Dbptr pointer() const { return pointer_; }
    bool names_table() const { return pointer_.table >= 0; }
    const std::string &path() const { return path_; }
    // A table by its name; `where` begins the message when there is none.
    Dbptr table(const std::string &name, std::string_view where) const;

private:
    std::string path_;
    Dbptr pointer_{};
};

// Answers to dbquery.
std::string text_answer(Dbptr about, int code);
std::int64_t number_answer(Dbptr about, int code);
std::vector<std::string> list_answer(Dbptr about, int code);

// A list of texts for a call, which lives as long as the object.
class TextList
{
public:
    explicit TextList(std::vector<std::string> texts);
    operator const Tbl *() const { return list_.get(); }

private:
    struct Release {
        void operator()(Tbl *list) const { freetbl(list, nullptr); }
    };
    std::vector<std::string> texts_;
    std::unique_ptr<Tbl, Release> list_;
};

} // namespace ovdb
