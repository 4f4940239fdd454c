#include "saved/saved_view.h"

#include "base/concat.h"
#include "operation/derivation.h"
#include "saved/saved_parts.h"
#include "saved/saved_rows.h"
#include "storage/replacement_file.h"

#include <orvane/util.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace orvane {

bool looks_like_saved_view(std::string_view head)
{
    return head.starts_with(saved_view_mark);
}

// ---- Saved views of a database -------------------------------------------------------------------

namespace {

// What a call that succeeds all the same logs is taken out of the error log again.
class LogTaken
{
public:
    LogTaken() : before_(text(0)), count_(elog_count()) {}

    // The lines that came since.
    std::string take()
    {
        const std::string since = text(count_);
        if (elog_count() == count_)
            return since;
        elog_clear();
        if (!before_.empty())
            elog_log("%s", before_.c_str());
        return since;
    }

private:
    static std::string text(std::int64_t first)
    {
        const std::unique_ptr<char, void (*)(void *)> lines(elog_string(first), std::free);
        return lines ? lines.get() : "";
    }

    std::string before_;
    std::int64_t count_;
};

bool has_mark(FileSystem &files, const LocatedPath &path)
{
    const auto file = files.open(path.absolute);
    std::array<char, saved_view_mark.size()> head;
    if (!file.ok())
        return false;
    const auto got = (*file)->read_at(0, head);
    return got.ok() && looks_like_saved_view(std::string_view(head.data(), *got));
}

// The names of the saved views beside a descriptor.
std::vector<std::string> saved_view_names(const Database &database, FileSystem &files)
{
    std::vector<std::string> found;
    const auto entries = files.list(database.path().folder().absolute);
    const std::string prefix = database.path().name() + ".";
    for (const std::string &entry : entries.ok() ? *entries : std::vector<std::string>()) {
        if (!entry.starts_with(prefix) || entry.size() == prefix.size())
            continue;
        const std::string name = entry.substr(prefix.size());
        if (database.schema().relation_index(name) >= 0)
            continue;
        const LocatedPath path = database.path().with_ending("." + name);
        const auto state = files.state(path.absolute);
        if (state.ok() && state->kind == FileKind::File && has_mark(files, path))
            found.push_back(name);
    }
    return found;
}

Status add_saved_view(Database &database, FileSystem &files, const std::string &name,
                      std::span<const std::string> taken)
{
    if (Status named = database.check_view_name(name); !named.ok())
        return named;
    SavedFile saved{&files, database.path().with_ending("." + name), {}};
    const auto state = files.state(saved.path.absolute);
    if (!state.ok())
        return state.status();
    saved.state = *state;
    auto file = files.open(saved.path.absolute);
    if (!file.ok())
        return file.status();
    LineReader lines(reading_file(std::move(*file)), saved.path.shown);
    auto head = read_head_lines(lines, &database.schema());
    if (!head.ok())
        return head.status();
    const auto rows = std::make_shared<SavedRows>(std::move(*head), saved.path.shown);
    auto view = rows->make_tables(database, name, taken);
    rows->read_later(std::move(saved));
    database.add_view(std::move(view));
    return Status();
}

} // namespace

void add_saved_views(Database &database, FileSystem &files)
{
    const auto names = saved_view_names(database, files);
    for (const std::string &name : names) {
        LogTaken log;
        const Status added = add_saved_view(database, files, name, names);
        if (added.ok())
            continue;
        std::string why = log.take();
        why.append(why.empty() ? "" : "\n").append(added.message());
        database.note_refused_view(name, Status(added.code(), why));
        elog_notice("%s", why.c_str());
    }
}

// ---- Writing -------------------------------------------------------------------------------------

Status write_view(Database &database, const std::shared_ptr<Table> &table, const TextSink &sink, Work &work)
{
    const auto parts = take_apart(database, table);
    if (!parts.ok())
        return parts.status();
    return write_saved_view(parts->head, parts->rows, sink, work);
}

namespace {

// What is there may only be a saved view; tables, descriptors and whatever else people have stay.
Status check_place(FileSystem &files, const LocatedPath &path)
{
    const auto state = files.state(path.absolute);
    if (!state.ok())
        return state.status();
    if (state->kind == FileKind::Missing || (state->kind == FileKind::File && has_mark(files, path)))
        return Status();
    return Status(Code::Argument,
                  concat(path.shown, ": is there already and is no saved view; give the view another name"));
}

} // namespace

Result<LocatedPath> save_view(Database &database, FileSystem &files, const std::shared_ptr<Table> &table,
                              Work &work)
{
    // A base table's own name is that of its file.
    std::string name = table->name();
    for (int number = 1; !table->is_view(); ++number) {
        name = concat(table->name(), "_view", number);
        const auto state = files.state(database.path().with_ending("." + name).absolute);
        if (database.check_view_name(name).ok() && (!state.ok() || state->kind == FileKind::Missing))
            break;
    }
    LocatedPath path = database.path().with_ending("." + name);
    if (Status free = check_place(files, path); !free.ok())
        return free;
    const auto parts = take_apart(database, table);
    if (!parts.ok())
        return parts.status();
    auto file = ReplacementFile::make(files, path);
    if (!file.ok())
        return file.status();
    Status written = write_saved_view(
        parts->head, parts->rows, [&](std::string_view text) { return (*file)->write(text); }, work);
    if (written.ok())
        written = (*file)->commit();
    if (!written.ok())
        return written;
    return path;
}

// ---- Reading -------------------------------------------------------------------------------------

Result<std::int64_t> read_view(Database &database, LineReader &lines, const SavedHead &head, std::string name,
                               Work &work)
{
    if (name.empty()) {
        const std::string &saved_as = head.view().name;
        name = saved_as;
        for (int number = 1; !database.check_view_name(name).ok(); ++number)
            name = concat(saved_as, "_view", number);
    }
    if (Status named = database.check_view_name(name); !named.ok())
        return named;
    auto columns = read_saved_rows(lines, head, &work);
    if (!columns.ok())
        return columns.status();
    const auto rows = std::make_shared<SavedRows>(head, lines.shown());
    auto view = rows->make_tables(database, name, {});
    rows->give(std::move(*columns));
    return database.add_view(std::move(view));
}

} // namespace orvane
