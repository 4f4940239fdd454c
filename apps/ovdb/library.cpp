#include "library.h"

#include "long_work.h"

#include <cstdio>
#include <cstdlib>

namespace ovdb {

namespace {

// Messages of the library begin with the name of the call that failed, which says nothing to who typed an
// option.
std::string_view without_call(std::string_view message)
{
    const auto end = message.find(": ");
    const std::string_view call = message.substr(0, end);
    const bool is_call = end != std::string_view::npos &&
                         (call.starts_with("db") || call.starts_with("OVdb")) &&
                         call.find_first_not_of("abcdefghijklmnopqrstuvwxyz_OV") == std::string_view::npos;
    return is_call ? message.substr(end + 2) : message;
}

void print_notice(const char *text, void *)
{
    note(text);
}

} // namespace

std::string taken_log()
{
    char *text = elog_string(0);
    std::string log = text ? text : "";
    std::free(text);
    elog_clear();
    return log;
}

void fail_with_log(std::string_view where, std::string_view remedy)
{
    const std::string log = taken_log();
    stop_if_interrupted();
    std::string message(where);
    message.append(": ").append(without_call(log));
    if (!remedy.empty())
        message.append("\n").append(remedy);
    throw Failure(ExitCode::Failed, message);
}

void pass_on_remarks()
{
    if (const std::string log = taken_log(); !log.empty())
        note(without_call(log));
}

void note(std::string_view text)
{
    std::fprintf(stderr, "ovdb: note: %.*s\n", static_cast<int>(text.size()), text.data());
}

void pass_on_notices()
{
    elog_set_notice_hook(print_notice, nullptr);
}

Database::Database(const std::string &path, Access access) : path_(path)
{
    const LongWork opening("opening");
    if (path == "-" && access == Access::Read) {
        pointer_ = dbread_view(dbinvalid(), stdin, nullptr);
        if (pointer_.table < 0)
            fail_with_log("standard input", "'ovdb' reads views from there that were saved, such as DB.VIEW");
    } else if (dbopen_database(path.c_str(), access == Access::Read ? "r" : "r+", &pointer_) < 0)
        fail_with_log("cannot open the database",
                      "give the path of a descriptor, or of table files without .TABLE");
    pass_on_remarks();
}

Database::~Database()
{
    OVdbclose(pointer_);
}

Dbptr Database::table(const std::string &name, std::string_view where) const
{
    const Dbptr table = dblookup(pointer_, "", name.c_str(), "dbALL", "dbALL");
    if (table.table < 0)
        fail_with_log(where,
                      "'ovdb tables --all " + text_answer(pointer_, dbDATABASE_NAME) + "' lists the tables");
    return table;
}

std::string text_answer(Dbptr about, int code)
{
    const char *answer = nullptr;
    if (dbquery(about, code, &answer) < 0 || !answer)
        fail_with_log("cannot ask the database", "");
    return answer;
}

std::int64_t number_answer(Dbptr about, int code)
{
    std::int64_t answer = 0;
    if (dbquery(about, code, &answer) < 0)
        fail_with_log("cannot ask the database", "");
    return answer;
}

std::vector<std::string> list_answer(Dbptr about, int code)
{
    Tbl *answer = nullptr;
    if (dbquery(about, code, &answer) < 0)
        fail_with_log("cannot ask the database", "");
    std::vector<std::string> texts;
    for (std::int64_t i = 0; i < maxtbl(answer); ++i)
        texts.emplace_back(static_cast<const char *>(gettbl(answer, i)));
    freetbl(answer, std::free);
    return texts;
}

TextList::TextList(std::vector<std::string> texts) : texts_(std::move(texts)), list_(newtbl(0))
{
    for (std::string &text : texts_)
        pushtbl(list_.get(), text.data());
}

} // namespace ovdb
