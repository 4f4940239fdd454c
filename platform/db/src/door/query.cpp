// dbquery: looks the question up, asks it, hands the answer over.
#include "door/guard.h"
#include "door/query_table.h"
#include "door/text_lists.h"

#include "base/concat.h"

#include <orvane/db.h>

#include <cstring>

using namespace orvane;

namespace {

// Texts made for a question, kept per question and place until it is asked again.
const char *keep_text(Subject &subject, int code, std::string text)
{
    return subject.database->keep_answer(code, subject.table, std::move(text)).c_str();
}

std::vector<std::string_view> views_of(const std::vector<std::string> &texts)
{
    return {texts.begin(), texts.end()};
}

// Puts the answer where the caller wants it.
struct Asking {
    Subject &subject;
    const QueryRow &row;
    void *out;
    Status remark;

    void operator()(IntegerHandler handler)
    {
        Answer answer;
        *static_cast<std::int64_t *>(out) = handler(subject, answer);
        remark = std::move(answer.remark);
    }
    void operator()(LastingTextHandler handler)
    {
        *static_cast<const char **>(out) = handler(subject).c_str();
    }
    void operator()(TextHandler handler)
    {
        *static_cast<const char **>(out) = keep_text(subject, row.code, handler(subject));
    }
    void operator()(ListHandler handler)
    {
        const auto texts = handler(subject);
        *static_cast<Tbl **>(out) = new_text_list(views_of(texts));
    }
    void operator()(ArrayHandler handler) { *static_cast<Arr **>(out) = new_text_array(handler(subject)); }
};

Status ask(const Dbptr &db, int code, void *answer)
{
    const QueryRow *row = find_query(code);
    if (!row)
        return Status(Code::Argument, concat("dbquery: there is no question ", code));
    Subject subject;
    if (Status found = find_subject(db, row->level, "dbquery", subject); !found.ok())
        return Status(found.code(), concat(found.message(), " (asked for its ", row->name, ")"));
    Asking asking{subject, *row, answer, Status()};
    std::visit(asking, row->handler);
    // A table that is refused answers as an empty one, and says why each time.
    if (!asking.remark.ok())
        log_failure(asking.remark);
    return Status();
}

} // namespace

int dbquery(Dbptr db, int code, void *answer)
{
    return guarded("dbquery", [&] {
        if (!answer)
            return code_of(Status(Code::Argument, "dbquery: the place for the answer is null"));
        static_assert(sizeof(std::int64_t) == sizeof(void *), "an answer of any kind has eight bytes");
        std::memset(answer, 0, sizeof(std::int64_t));
        return code_of(ask(db, code, answer));
    });
}
