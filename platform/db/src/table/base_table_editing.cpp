// Changing the records of a base table.
#include "table/base_table.h"

#include "base/concat.h"
#include "column/column_update.h"

namespace orvane {

Status BaseTable::check_writable() const
{
    if (opened_for_writing_)
        return Status();
    return Status(Code::Permission, concat(file_.path().shown, ": the database was opened for reading only; ",
                                           "open it with 'r+' to change it"));
}

Status BaseTable::of_file(const Status &failure, std::string_view what) const
{
    return Status(failure.code(), concat(file_.path().shown, ": ", what, failure.message()));
}

// What was derived from the file follows a change of one record, where it is known that nothing else changed.
void BaseTable::follow(FileVersion version_before, std::int64_t number, std::string_view after)
{
    if (file_.version() != version_before)
        return;
    const std::string line = concat(after, '\n');
    storage_.columns.update(version_before, [&](int field, Column &column) {
        return update_column(column, relation_.fields()[static_cast<std::size_t>(field)], line, number);
    });
    if (index_.version() != version_before)
        return;
    index_.forget_block(number);
    put_into_index(number, after);
}

// ---- Records in place ----------------------------------------------------------------------------

Status BaseTable::overwrite(FileEditor &editor, std::int64_t number, const std::string &before,
                            const std::string &after, Work &work)
{
    const FileVersion version = file_.version();
    if (Status done = editor.overwrite(number, before, after, work); !done.ok())
        return done;
    follow(version, number, after);
    return Status();
}

Status BaseTable::stale(std::int64_t number) const
{
    return Status(Code::Stale,
                  concat(file_.path().shown,
                         ": another program replaced the table or cut it short since it was ",
                         "read; record ", number, " may be another one now: look at the table again"));
}

void BaseTable::tell_change(std::int64_t number, int field, std::string_view before, std::string_view after,
                            const Work &work) const
{
    // The timestamp is set by every change, so that there is nothing in it that could be put back.
    if (!work.listener() || (field >= 0 && field == rules_.timestamp()))
        return;
    const bool was_marked = before == relation_.null_record();
    const bool whole = field < 0 || was_marked;
    const auto text = [&](std::string_view record) {
        return whole ? record : rules_.field_of(record, static_cast<std::size_t>(field));
    };
    if (text(before) == text(after))
        return;
    (*work.listener())({.kind = field < 0 ? RecordChange::Kind::Mark : RecordChange::Kind::Values,
                        .relation = relation_,
                        .generation = file_.generation(),
                        .field = field,
                        .whole_records = whole,
                        .records = {&number, 1},
                        .before = text(before),
                        .after = text(after)});
}

Status BaseTable::change(std::uint64_t generation, std::int64_t number, int field, Work &work,
                         const Edit &edit)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    auto hold = editor_.begin(FileEditor::Purpose::Change, work);
    if (!hold.ok())
        return hold.status();
    FileEditor &editor = hold->editor();
    // Whoever knows the record by its number means the one that had it before.
    if (file_.generation() != generation)
        return stale(number);
    const auto before = editor.record(number);
    if (!before.ok())
        return before.status();
    const auto after = edit(*before);
    if (!after.ok())
        return of_file(after.status(), concat("record ", number, ", "));
    if (Status done = overwrite(editor, number, *before, *after, work); !done.ok())
        return done;
    tell_change(number, field, *before, *after, work);
    return Status();
}

Status BaseTable::put(std::int64_t number, std::size_t field, const FieldValue &value, Work &work)
{
    return put_as_of(file_.generation(), number, field, value, work);
}

Status BaseTable::put_as_of(std::uint64_t generation, std::int64_t number, std::size_t field,
                            const FieldValue &value, Work &work)
{
    // A value that can't be put is told before anybody waits for a lock.
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    const auto text = rules_.field_text(field, value);
    if (!text.ok())
        return of_file(text.status(), concat("record ", number, ", "));
    return change(generation, number, static_cast<int>(field), work,
                  [&](const std::string &before) -> Result<std::string> {
                      std::string after = before;
                      rules_.put(after, field, *text);
                      rules_.stamp(after);
                      return after;
                  });
}

Status BaseTable::put_scratch(std::size_t field, const FieldValue &value)
{
    const auto text = rules_.field_text(field, value);
    if (!text.ok())
        return of_file(text.status(), "scratch record, ");
    rules_.put(scratch_, field, *text);
    return Status();
}

Status BaseTable::check_put(std::int64_t number, std::size_t field, const FieldValue &value)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    if (const auto there = record(number); !there.ok())
        return there.status();
    const auto text = rules_.field_text(field, value);
    return text.ok() ? Status() : of_file(text.status(), concat("record ", number, ", "));
}

Status BaseTable::mark(std::int64_t number, Work &work)
{
    return change(file_.generation(), number, -1, work,
                  [this](const std::string &) -> Result<std::string> { return relation_.null_record(); });
}

// ---- Adding --------------------------------------------------------------------------------------

Result<std::int64_t> BaseTable::append(FileEditor &editor, std::string record, const Work *told)
{
    rules_.stamp(record);
    const FileVersion version = file_.version();
    const auto number = editor.append(record);
    if (!number.ok())
        return number;
    follow(version, *number, record);
    if (told && told->listener())
        (*told->listener())({.kind = RecordChange::Kind::Add,
                             .relation = relation_,
                             .generation = file_.generation(),
                             .whole_records = true,
                             .records = {&*number, 1},
                             .before = relation_.null_record(), // what it becomes when it is taken back
                             .after = record});
    return number;
}

Result<std::int64_t> BaseTable::add(std::string_view record_text, Work &work)
{
    return add_record(record_text, Unless::Nothing, work);
}

Result<std::int64_t> BaseTable::add_checked(std::string_view record_text, Work &work)
{
    return add_record(record_text, index_.has_key() ? Unless::KeyIsThere : Unless::Nothing, work);
}

Result<std::int64_t> BaseTable::add_record(std::string_view record_text, Unless unless, Work &work)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    if (Status fits = rules_.check_record(record_text); !fits.ok())
        return of_file(fits, "a record cannot be added: ");
    auto hold = editor_.begin(FileEditor::Purpose::Append, work);
    if (!hold.ok())
        return hold.status();
    FileEditor &editor = hold->editor();
    std::string record(record_text);
    if (unless == Unless::KeyIsThere) {
        rules_.stamp(record); // it may be part of the key
        if (Status built = update_index(editor, work); !built.ok())
            return built;
        const auto same = find_key(editor, index_.key_of(record));
        if (!same.ok() || *same >= 0)
            return same;
    }
    return append(editor, std::move(record), &work);
}

void BaseTable::put_into_index(std::int64_t number, std::string_view record)
{
    index_.put(number, rules_.is_marked(record) ? std::nullopt : std::optional(record));
}

// What another program did may be anything, but nearly always most of the table stays as it was: that is told
// from its bytes, which costs much less than reading its keys.
Status BaseTable::update_index(FileEditor &editor, Work &work)
{
    if (index_.version() == file_.version())
        return Status();
    if (!index_.can_follow(file_.generation(), editor.count()))
        index_.start(editor.count(), file_.generation());
    index_.set_version(0);
    const auto size = static_cast<std::size_t>(relation_.record_size());
    Status done = editor.for_each_block(
        KeyIndex::block_records, 0, 1, work, [&](std::int64_t first, std::string_view lines) {
            if (index_.is_same_block(first, lines))
                return Status();
            for (std::int64_t number = first; !lines.empty(); ++number, lines.remove_prefix(size)) {
                if (Status formed = editor.check_line(number, lines.substr(0, size)); !formed.ok()) {
                    index_.start(0, ~std::uint64_t{0}); // what is remembered of the block was not taken
                    return formed;
                }
                put_into_index(number, lines.substr(0, size - 1));
            }
            return Status();
        });
    if (!done.ok()) // a line that is none says where it is
        return done.code() == Code::Cancelled || done.code() == Code::Format
                   ? done
                   : of_file(done, "its keys cannot be read: ");
    index_.set_version(file_.version());
    return Status();
}

// The number of the first record with the key, or -1.
Result<std::int64_t> BaseTable::find_key(FileEditor &editor, std::string_view key)
{
    for (const std::int64_t number : index_.candidates(key)) {
        const auto record = editor.record(number);
        if (!record.ok())
            return record.status();
        if (index_.key_of(*record) == key)
            return number;
    }
    return std::int64_t{-1};
}

// ---- Counting and crunching ----------------------------------------------------------------------

Result<std::int64_t> BaseTable::count_up(std::size_t key, const FieldValue &value, std::size_t number,
                                         std::int64_t at_least, Work &work)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    const auto wanted = rules_.field_text(key, value);
    if (!wanted.ok())
        return of_file(wanted.status(), "");
    auto hold = editor_.begin(FileEditor::Purpose::Append, work);
    if (!hold.ok())
        return hold.status();
    FileEditor &editor = hold->editor();
    std::int64_t found = -1;
    std::string before;
    Status read = editor.for_each_record(0, 1, work, [&](std::int64_t at, std::string_view line) {
        const std::string_view record = line.substr(0, line.size() - 1);
        if (found < 0 && trimmed_right(rules_.field_of(record, key)) == trimmed_right(*wanted)) {
            found = at;
            before = record;
        }
        return Status();
    });
    if (!read.ok())
        return read;
    FieldValue next;
    next.type = FieldType::Integer;
    next.integer = at_least + 1;
    if (found >= 0)
        if (const auto last = decode_integer(rules_.field_of(before, number)); last && *last >= next.integer)
            next.integer = *last + 1;
    const auto text = rules_.field_text(number, next);
    if (!text.ok())
        return of_file(text.status(), "");
    std::string after = found >= 0 ? before : relation_.null_record();
    rules_.put(after, key, *wanted);
    rules_.put(after, number, *text);
    rules_.stamp(after);
    Status done;
    if (found >= 0)
        done = overwrite(editor, found, before, after, work);
    else
        done = append(editor, after).status();
    return done.ok() ? Result<std::int64_t>(next.integer) : Result<std::int64_t>(done);
}

Status BaseTable::crunch(Work &work, const std::function<void(const Crunched &)> &renumber)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    static_cast<void>(file_.count_records());
    if (!file_.present() && file_.refusal().ok())
        return Status(); // without a file there is nothing to remove
    auto hold = editor_.begin(FileEditor::Purpose::Change, work);
    if (!hold.ok())
        return hold.status();
    FileEditor &editor = hold->editor();
    Crunched crunched;
    crunched.generation = file_.generation();
    const std::string &nulls = relation_.null_record();
    auto replaced = editor.replace(
        [&](std::string_view record) { return record == nulls || rules_.is_marked(record); }, work);
    if (!replaced.ok())
        return replaced.status();
    crunched.records = replaced->records;
    crunched.gone = std::move(replaced->left_out);
    if (!crunched.gone.empty()) {
        last_moves_ = RecordMoves{static_cast<std::int64_t>(crunched.generation), numbering(), crunched.gone};
        renumber(crunched);
        if (work.listener())
            (*work.listener())({.kind = RecordChange::Kind::Renumbering,
                                .relation = relation_,
                                .generation = file_.generation()});
    }
    return replaced->forced;
}

// ---- Mending -------------------------------------------------------------------------------------

Result<FileEditor::Mended> BaseTable::mend(Work &work)
{
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    auto hold = editor_.begin(FileEditor::Purpose::Mend, work);
    if (!hold.ok())
        return hold.status();
    return hold->editor().mend(work);
}

} // namespace orvane
