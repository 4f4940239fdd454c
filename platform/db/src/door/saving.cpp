// dbwrite_view, dbsave_view, dbread_view and dbunjoin.
#include "door/guard.h"
#include "door/subject.h"

#include "base/concat.h"
#include "operation/derivation.h"
#include "operation/unjoin.h"
#include "saved/saved_view.h"
#include "storage/text_stream.h"

#include <orvane/db.h>

#include <cerrno>
#include <cstring>

using namespace orvane;

namespace {

// That of a file which couldn't be opened; the system's last word may be why.
Status no_stream(int said_by_system)
{
    return Status(Code::Argument,
                  concat("there is no stream",
                         said_by_system != 0 ? concat(": ", std::strerror(said_by_system)) : std::string()));
}

// Looks the pointer's table up and does something with it as an operation.
template <typename Save>
int saving(const char *call, const Dbptr &db, Save save)
{
    return guarded(call, [&] {
        Subject subject;
        if (Status found = find_subject(db, Level::Table, call, subject); !found.ok())
            return code_of(found);
        const OperationGuard running(*subject.database);
        if (!running.status().ok())
            return code_of(named_failure(call, running.status()));
        Work work(call);
        return code_of(
            named_failure(call, save(*subject.database, subject.database->shared_table(db.table), work)));
    });
}

constexpr const char *stream_name = "saved view";

// Reads a view from a stream into the database that a pointer names; where it names none, into the one that
// the view was saved from, which is opened and stays open only if that succeeds.
Result<Dbptr> read_from_stream(const Dbptr &db, std::FILE *stream, const char *name)
{
    DatabaseRegistry &registry = DatabaseRegistry::of_process();
    LineReader lines(reading_stream(stream, stream_name), stream_name);
    Work work("dbread_view");
    const bool is_given = db.database >= 0;
    Subject subject;
    if (is_given)
        if (Status found = find_subject(db, Level::Database, "dbread_view", subject); !found.ok())
            return found;
    std::string text;
    auto head = read_head_lines(lines, is_given ? &subject.database->schema() : nullptr, &text);
    if (!head.ok())
        return head.status();
    std::int64_t index = db.database;
    if (!is_given) {
        if (head->database.empty())
            return lines.wrong("the head names no database; say which one it is a view of");
        std::int64_t table = -1;
        const auto opened = registry.open(head->database, "r", table);
        if (!opened.ok())
            return opened.status().with_line(
                concat(stream_name, ": was saved from this database; say which one it is a view of"));
        index = *opened;
        head = read_saved_head(text, stream_name, &registry.database(index)->schema());
    }
    Database &database = *registry.database(index);
    auto view = [&]() -> Result<std::int64_t> {
        if (!head.ok())
            return head.status();
        const OperationGuard running(database);
        if (!running.status().ok())
            return running.status();
        return read_view(database, lines, *head, name ? name : "", work);
    }();
    if (view.ok())
        return Dbptr{index, *view, dbALL, dbALL};
    if (!is_given)
        registry.close(index);
    return view.status();
}

} // namespace

int dbwrite_view(Dbptr db, FILE *stream)
{
    const int said_by_system = errno;
    return saving("dbwrite_view", db, [&](Database &database, const auto &table, Work &work) {
        if (!stream)
            return no_stream(said_by_system);
        TextStream out(stream);
        Status written = write_view(
            database, table, [&](std::string_view text) { return out.write(text); }, work);
        return written.ok() ? out.finish() : written;
    });
}

int dbsave_view(Dbptr db)
{
    return saving("dbsave_view", db, [&](Database &database, const auto &table, Work &work) {
        const auto path = save_view(database, current_file_system(), table, work);
        if (!path.ok())
            return path.status();
        if (!table->is_view())
            elog_notice("table %s is saved as the view %s", table->name().c_str(), path->shown.c_str());
        return Status();
    });
}

int dbunjoin(Dbptr db, const char *path, int flag)
{
    return saving("dbunjoin", db, [&](Database &database, const auto &table, Work &work) {
        if (!path || *path == '\0')
            return Status(Code::Argument, "the path of the new database is empty");
        if (flag != 0)
            return Status(Code::Argument, concat("the flag is ", flag, " where 0 is expected"));
        return unjoin(database, current_file_system(), table, LocatedPath::from(path), work);
    });
}

Dbptr dbread_view(Dbptr database, FILE *stream, const char *name)
{
    const int said_by_system = errno;
    Dbptr made = dbinvalid();
    guarded("dbread_view", [&] {
        if (!stream)
            return code_of(named_failure("dbread_view", no_stream(said_by_system)));
        const auto view = read_from_stream(database, stream, name);
        if (view.ok())
            made = *view;
        return code_of(named_failure("dbread_view", view.status()));
    });
    return made;
}
