// dbselect_hdr, dbselect and dbrow_range.
#include "door/derivations.h"
#include "door/row_pointer.h"

#include "base/concat.h"
#include "operation/select.h"

#include <cerrno>
#include <cstring>

using namespace orvane;

namespace {

constexpr int max_attempts = 4; // at tables that keep changing while they are opened

// What both calls are given, checked.
struct Selecting {
    Subject subject;
    std::vector<SelectedField> fields;
    TextForm form;
};

Result<Selecting> prepare(const char *call, const Dbptr &db, const Tbl *fields, const std::FILE *stream,
                          const char *separator, int flag)
{
    if (!stream) // that of a file which couldn't be opened; the system's last word may be why
        return Status(Code::Argument,
                      concat("there is no stream to write to",
                             errno != 0 ? concat(": ", std::strerror(errno)) : std::string()));
    if (!separator)
        return Status(Code::Argument, "the separator is null");
    if (flag != 0 && flag != 1)
        return Status(Code::Argument, concat("the flag is ", flag, " where 0 or 1 is expected"));
    auto form = TextForm::make(separator, flag == 1);
    if (!form.ok())
        return form.status();
    Subject subject;
    if (Status found = find_subject(db, Level::Table, call, subject); !found.ok())
        return found;
    if (!fields)
        return Selecting{subject, all_fields(*subject.table), std::move(*form)};
    const auto names = texts_of(fields, "fields");
    if (!names.ok())
        return names.status();
    auto selected = selected_fields(*subject.table, standing_on(db), *names);
    if (!selected.ok())
        return selected.status();
    return Selecting{subject, std::move(*selected), std::move(*form)};
}

Result<RowRange> rows_of(const Dbptr &db, const Table &table, std::int64_t row_count)
{
    if (db.record == dbALL)
        return RowRange{0, row_count};
    if (db.record < 0)
        return Status(Code::Argument,
                      concat("the pointer ", pointer_text(db), " points to a record without a number"));
    const RowRange rows{db.record, end_of_rows(db)};
    if (rows.first >= rows.end || rows.end > row_count)
        return Status(Code::NotFound, concat("there are no records ", rows.first, " to ", rows.end - 1,
                                             " in table ", table.name(), ", which has ", row_count));
    return rows;
}

// A table is looked at anew when it changes between the look and the opening of its file; once lines are
// written it is too late for that.
Status write_selected(const Selecting &selecting, std::FILE *file)
{
    const Subject &subject = selecting.subject;
    const OperationGuard running(*subject.database);
    if (!running.status().ok())
        return running.status();
    Work work("dbselect");
    TextStream stream(file);
    for (int attempt = 1;; ++attempt) {
        Operand operand(subject.database->shared_table(subject.pointer.table));
        if (Status looked = operand.look(work.snapshots()); !looked.ok())
            return looked;
        const auto rows = rows_of(subject.pointer, *subject.table, operand.row_count());
        for (const Status &remark : operand.remarks())
            log_failure(remark);
        if (!rows.ok())
            return rows.status();
        Status written = write_rows(operand, *rows, selecting.fields, selecting.form, stream, work);
        if (written.ok() || !work.take_change() || attempt == max_attempts)
            return written;
    }
}

// Runs one of the calls. An errno that it finds is the caller's, for the next call that is given no stream.
template <typename Write>
int selecting(const char *call, const Dbptr &db, const Tbl *fields, std::FILE *stream, const char *separator,
              int flag, Write write)
{
    const int said_by_system = errno;
    const int code = guarded(call, [&] {
        const auto prepared = prepare(call, db, fields, stream, separator, flag);
        return code_of(named_failure(call, prepared.ok() ? write(*prepared) : prepared.status()));
    });
    if (!stream)
        errno = said_by_system;
    return code;
}

} // namespace

int dbselect_hdr(Dbptr db, const Tbl *fields, FILE *stream, const char *separator, int flag)
{
    return selecting("dbselect_hdr", db, fields, stream, separator, flag, [&](const Selecting &prepared) {
        TextStream out(stream);
        return write_names(*prepared.subject.table, prepared.fields, prepared.form, out);
    });
}

int dbselect(Dbptr db, const Tbl *fields, FILE *stream, const char *separator, int flag)
{
    return selecting("dbselect", db, fields, stream, separator, flag,
                     [&](const Selecting &prepared) { return write_selected(prepared, stream); });
}

Dbptr dbrow_range(Dbptr db, int64_t first, int64_t end)
{
    Dbptr made = dbinvalid();
    guarded("dbrow_range", [&] {
        Subject subject;
        if (Status found = find_subject(db, Level::Table, "dbrow_range", subject); !found.ok())
            return code_of(found);
        if (first < 0 || first >= end)
            return code_of(Status(Code::Argument, concat("dbrow_range: ", first, " to ", end,
                                                         " is no range: the end lies behind the first row")));
        made = pointer_to_rows(db.database, db.table, first, end);
        return 0;
    });
    return made;
}
