#include "edit/file_editor.h"

#include "base/concat.h"

#include <orvane/util.h>

#include <algorithm>
#include <ctime>

namespace orvane {

namespace {

// A write within one of these is done whole or not at all: what memory the system copies at a time, when the
// program is killed; what the disk does at a time, when the machine is.
constexpr std::int64_t page_bytes = 4096;
constexpr std::int64_t sector_bytes = 512;

std::int64_t now_in_nanoseconds()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

} // namespace

FileEditor::FileEditor(Storage &storage, RecordFile &records, std::int64_t record_size, FilePolicy policy)
    : storage_(storage), records_(records), record_size_(record_size), policy_(policy)
{
}

Status FileEditor::said(const Status &failure, const char *what) const
{
    return Status(failure.code(), concat(records_.path().shown, ": ", what, ": ", failure.message()));
}

// ---- Holding the file ----------------------------------------------------------------------------

bool FileEditor::target_is_current() const
{
    return target_.file && records_.present() && target_.identity.same_file(records_.state());
}

// What is to be mended may be refused for what it holds, not for what it is.
bool FileEditor::is_usable(Purpose purpose) const
{
    return records_.refusal().ok() || (purpose == Purpose::Mend && records_.state().kind == FileKind::File &&
                                       records_.refusal().code() == Code::Format);
}

Status FileEditor::open_target(Purpose purpose)
{
    target_ = Target();
    const bool make = !records_.present();
    if (make && purpose != Purpose::Append)
        return Status(Code::NotFound, concat(records_.path().shown, ": there is no such file"));
    const std::string &path = records_.path().absolute;
    auto file = storage_.files.open_to_write(path, make ? Creation::New : Creation::Never);
    if (!file.ok())
        return said(file.status(),
                    make ? "the table's file cannot be made" : "cannot be opened to be changed");
    target_.file = std::move(*file);
    target_.made = make;
    const auto state = target_.file->state();
    if (!state.ok()) {
        target_ = Target();
        return said(state.status(), "cannot be changed");
    }
    target_.identity = *state;
    const auto real = storage_.files.real_path(path);
    target_.real_path = real.ok() ? *real : path;
    return Status();
}

Status FileEditor::lock_target(Work &work)
{
    return policy_.lock ? wait_for_lock(*target_.file, writers_lock, records_.path().shown, work) : Status();
}

// Another program may put another file in the place between any two steps, so that all are gone through until
// the file that is locked is the one that is there.
Result<FileEditor::Hold> FileEditor::begin(Purpose purpose, Work &work)
{
    for (;;) {
        if (!target_.file) {
            static_cast<void>(records_.count_records());
            if (!is_usable(purpose))
                return records_.refusal();
            const bool was_present = records_.present();
            if (Status opened = open_target(purpose); !opened.ok()) {
                // The file may have come, or gone, in between: then it is begun anew.
                static_cast<void>(records_.look().ok());
                const bool other = records_.present() != was_present;
                if (!other || (was_present && purpose != Purpose::Append))
                    return opened;
            }
        }
        if (target_.file) {
            if (Status locked = lock_target(work); !locked.ok())
                return locked;
            Hold hold(*this);
            count_ = records_.count_records();
            if (!is_usable(purpose))
                return records_.refusal();
            if (target_is_current()) {
                if (Status done = take_back_unfinished_change(work); !done.ok())
                    return done;
                return hold;
            }
            target_ = Target();
        }
        if (Status asked = work.poll(); !asked.ok())
            return asked;
    }
}

void FileEditor::end()
{
    if (target_.file && policy_.lock && !target_.file->unlock(all_locks).ok())
        target_ = Target(); // closing it ends the lock
    target_.made = false;
}

// What was derived from the records stays true if nobody else's change can hide behind ours. Times that the
// system gives have a coarse tick; one with all its digits differs from any that follows.
void FileEditor::finish(std::int64_t first_changed, std::int64_t end_changed)
{
    std::int64_t stamp = now_in_nanoseconds();
    if (stamp == records_.state().modification_time)
        ++stamp;
    const bool stamped = policy_.lock && target_.file->set_modification_time(stamp).ok();
    const auto state = target_.file->state();
    if (!state.ok())
        return; // the next look will find a change
    records_.adopt(*state, first_changed, end_changed, stamped && state->modification_time == stamp);
    count_ = state->size / record_size_;
}

Status FileEditor::read_run(std::int64_t first, std::int64_t count, std::string &lines)
{
    if (first < 0 || first + count > count_)
        return Status(Code::NotFound,
                      concat(records_.path().shown, ": record ", first < 0 ? first : std::max(first, count_),
                             " is not there: the file has ", count_, count_ == 1 ? " record" : " records"));
    lines.resize(static_cast<std::size_t>(count * record_size_));
    const auto got = target_.file->read_at(first * record_size_, std::span<char>(lines));
    if (!got.ok())
        return said(got.status(), "a record cannot be read");
    if (*got < lines.size())
        return Status(Code::NotFound, concat(records_.path().shown, ": record ",
                                             first + static_cast<std::int64_t>(*got) / record_size_,
                                             " is gone: the file was cut short"));
    return Status();
}

Status FileEditor::check_line(std::int64_t number, std::string_view line) const
{
    if (line.find('\n') == line.size() - 1)
        return Status();
    return Status(Code::Format, concat(records_.path().shown, ": record ", number,
                                       " has a line feed out of its place; mend the file"));
}

Result<std::string> FileEditor::record(std::int64_t number)
{
    std::string line;
    if (Status read = read_run(number, 1, line); !read.ok())
        return read;
    if (Status checked = check_line(number, line); !checked.ok())
        return checked;
    line.pop_back();
    return line;
}

// ---- Appending -----------------------------------------------------------------------------------

Status FileEditor::read_end(std::string &tail)
{
    const std::int64_t whole = count_ * record_size_;
    tail.resize(static_cast<std::size_t>(records_.state().size - whole));
    const auto got = target_.file->read_at(whole, std::span<char>(tail));
    if (!got.ok())
        return said(got.status(), "its end cannot be read");
    tail.resize(*got);
    return Status();
}

// An unfinished last line is what a writer left who was killed, and was never acknowledged; or it wants
// nothing but its line feed, as the last line of a file does that a person wrote.
Status FileEditor::mend_end()
{
    std::string tail;
    if (Status read = read_end(tail); !read.ok())
        return read;
    if (tail.empty())
        return Status();
    const std::string &shown = records_.path().shown;
    const std::int64_t whole = count_ * record_size_;
    if (tail.find('\n') != std::string::npos)
        return Status(Code::Format,
                      concat(shown, ": the last lines, from byte ", whole, " on, are no records of ",
                             record_size_ - 1, " bytes; mend the file"));
    if (static_cast<std::int64_t>(tail.size()) == record_size_ - 1) {
        if (Status written = write_all(*target_.file, whole + record_size_ - 1, std::string_view("\n"));
            !written.ok())
            return said(written, "its last line cannot be ended");
        elog_notice("%s: its last line had no line feed and got one", shown.c_str());
    } else {
        if (Status cut = target_.file->truncate(whole); !cut.ok())
            return said(cut, "its unfinished last line cannot be removed");
        elog_notice("%s: its last line was not finished and was removed: '%s'", shown.c_str(), tail.c_str());
    }
    // Where the next record goes is nothing to be guessed.
    const auto state = target_.file->state();
    if (!state.ok())
        return said(state.status(), "its end cannot be found");
    static_cast<void>(records_.count_records());
    if (!records_.refusal().ok())
        return records_.refusal();
    count_ = state->size / record_size_;
    return Status();
}

// Nothing of a record that was not acknowledged shall stay, nor a file that was made for it.
Status FileEditor::undo_append(std::int64_t size, Status failure)
{
    if (target_.made && size == 0 && storage_.files.remove(records_.path().absolute).ok()) {
        target_ = Target();
        static_cast<void>(records_.look().ok());
        return failure;
    }
    if (Status cut = target_.file->truncate(size); !cut.ok())
        failure = failure.with_line(said(cut, "what was written of the record cannot be removed").message());
    static_cast<void>(records_.look().ok());
    return failure;
}

Result<std::int64_t> FileEditor::append(std::string_view text)
{
    if (Status mended = mend_end(); !mended.ok())
        return mended;
    const std::int64_t number = count_;
    const std::int64_t size = number * record_size_;
    const std::string line = concat(text, '\n');
    if (Status written = write_all(*target_.file, size, line); !written.ok())
        return undo_append(size, said(written, "a record cannot be added"));
    if (policy_.force_to_disk) {
        Status forced = target_.file->sync();
        if (forced.ok() && target_.made)
            forced = storage_.files.sync_folder(records_.path().folder().absolute);
        if (!forced.ok())
            return undo_append(size, said(forced, "a record cannot be added"));
    }
    finish(number, number + 1);
    return number;
}

// ---- Changing in place ---------------------------------------------------------------------------

bool FileEditor::may_be_cut_in_two(std::int64_t offset, std::size_t length) const
{
    const std::int64_t unit = policy_.force_to_disk ? sector_bytes : page_bytes;
    return offset / unit != (offset + static_cast<std::int64_t>(length) - 1) / unit;
}

Status FileEditor::write_note(const UndoNote &note)
{
    const std::string path = undo_note_path(target_.real_path);
    auto file = storage_.files.open_to_write(path, Creation::New);
    if (!file.ok())
        return file.status();
    Status done = write_all(**file, 0, written(note));
    if (done.ok() && policy_.force_to_disk)
        done = (*file)->sync();
    if (done.ok() && policy_.force_to_disk)
        done = storage_.files.sync_folder(LocatedPath::from(path).folder().absolute);
    if (!done.ok())
        static_cast<void>(storage_.files.remove(path).ok()); // half a note says nothing
    return done;
}

Status FileEditor::take_back_unfinished_change(Work &work)
{
    const std::string path = undo_note_path(target_.real_path);
    const auto state = storage_.files.state(path);
    if (!state.ok())
        return said(state.status(), "cannot look whether a change was left undone");
    if (state->kind == FileKind::Missing)
        return Status();
    const auto note = find_undo_note(storage_.files, path);
    if (!note.ok())
        return said(note.status(), "a change that was left undone cannot be taken back");
    if (*note && (*note)->is_about(target_.identity)) {
        bool begun = false;
        Status done = write_settled((*note)->offset, (*note)->bytes, work, begun);
        if (done.ok() && policy_.force_to_disk)
            done = target_.file->sync();
        if (!done.ok())
            return said(done, "a change that was left undone cannot be taken back");
        static_cast<void>(records_.count_records());
    }
    if (Status removed = storage_.files.remove(path); !removed.ok())
        return said(removed, "the note of a change that was left undone cannot be removed");
    return Status();
}

Status FileEditor::write_settled(std::int64_t offset, std::string_view bytes, Work &work, bool &begun)
{
    if (policy_.lock)
        if (Status locked = wait_for_content_lock(*target_.file, records_.path().shown, work); !locked.ok())
            return locked;
    begun = true;
    Status written = write_all(*target_.file, offset, bytes);
    if (policy_.lock)
        let_go(*target_.file, content_lock);
    return written;
}

Status FileEditor::overwrite_span(std::int64_t offset, std::string_view before, std::string_view after,
                                  Note note, Work &work, bool &begun)
{
    bool noted = false;
    if (may_be_cut_in_two(offset, after.size())) {
        Status written = write_note(UndoNote{target_.identity, offset, std::string(before)});
        noted = written.ok();
        if (!noted && (note == Note::Needed || written.code() != Code::Permission))
            return written;
    }
    Status done = write_settled(offset, after, work, begun);
    if (done.ok() && policy_.force_to_disk)
        done = target_.file->sync();
    if (!done.ok() && begun)
        if (Status restored = write_settled(offset, before, work, begun); !restored.ok())
            // The note, if there is one, stays and says what was there.
            return done.with_line(
                said(restored, "what was written of the record cannot be taken back").message());
    if (noted) {
        // A note that stays would take the change back, sooner or later.
        Status removed = storage_.files.remove(undo_note_path(target_.real_path));
        if (done.ok() && !removed.ok()) {
            if (Status restored = write_settled(offset, before, work, begun); !restored.ok())
                removed = removed.with_line(restored.message());
            return removed;
        }
    }
    return done;
}

// Nothing where all bytes are the same.
Status FileEditor::overwrite_differing(std::int64_t offset, std::string_view before, std::string_view after,
                                       Note note, Work &work, bool &begun)
{
    const auto first = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.end(), after.begin()).first - before.begin());
    if (first == before.size())
        return Status();
    std::size_t end = before.size();
    while (before[end - 1] == after[end - 1])
        --end;
    return overwrite_span(offset + static_cast<std::int64_t>(first), before.substr(first, end - first),
                          after.substr(first, end - first), note, work, begun);
}

Status FileEditor::overwrite(std::int64_t number, std::string_view before, std::string_view after, Work &work)
{
    if (before == after)
        return Status();
    bool begun = false;
    Status done = overwrite_differing(number * record_size_, before, after, Note::IfPossible, work, begun);
    if (!done.ok())
        return done.code() == Code::Cancelled ? done : said(done, "a record cannot be changed");
    finish(number, number + 1);
    return Status();
}

Status FileEditor::overwrite_each(std::int64_t first, std::string_view before, std::string_view after,
                                  Work &work, std::int64_t &done)
{
    const auto size = static_cast<std::size_t>(record_size_);
    for (std::size_t at = 0; at < before.size(); at += size, ++done) {
        bool begun = false;
        if (Status changed = overwrite_differing((first + done) * record_size_, before.substr(at, size),
                                                 after.substr(at, size), Note::IfPossible, work, begun);
            !changed.ok())
            return changed;
    }
    return Status();
}

Status FileEditor::overwrite_run(std::int64_t first, std::string_view before, std::string_view after,
                                 Work &work, std::int64_t &done)
{
    done = 0;
    const std::int64_t count = static_cast<std::int64_t>(before.size()) / record_size_;
    bool begun = false;
    Status changed = overwrite_differing(first * record_size_, before, after, Note::Needed, work, begun);
    if (changed.ok())
        done = count;
    else if (!begun && changed.code() == Code::Permission)
        changed = overwrite_each(first, before, after, work, done);
    if (done > 0)
        finish(first, first + done);
    if (changed.ok() || changed.code() == Code::Cancelled)
        return changed;
    return said(changed, "records cannot be changed");
}

} // namespace orvane
