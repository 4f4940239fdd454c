// Putting a file with some of the records in the place of a table's file.
#include "edit/file_editor.h"

#include "base/concat.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace orvane {

namespace {

constexpr std::int64_t read_bytes = 256 << 10;
// The clock by which births are told ticks every few milliseconds.
constexpr auto birth_tick = std::chrono::milliseconds(1);
constexpr int max_births = 50;

} // namespace

std::string FileEditor::replacement_path() const
{
    const auto name = target_.real_path.rfind('/') + 1;
    return concat(target_.real_path.substr(0, name), '.', target_.real_path.substr(name), ".new");
}

// A file that follows another one must be told from it, and from the one before that whose number it may get:
// so its birth is a later one.
Result<FileEditor::Target> FileEditor::make_replacement(const std::string &temporary_path)
{
    for (int birth = 0;; ++birth) {
        if (Status removed = storage_.files.remove(temporary_path); // of one who was killed
            !removed.ok() && removed.code() != Code::NotFound)
            return removed;
        auto file = storage_.files.open_to_write(temporary_path, Creation::New);
        if (!file.ok())
            return file.status();
        Target made;
        made.file = std::move(*file);
        const auto state = made.file->state();
        if (!state.ok())
            return state.status();
        made.identity = *state;
        made.real_path = target_.real_path;
        if (state->birth_time != target_.identity.birth_time || state->birth_time == 0 || birth == max_births)
            return made;
        std::this_thread::sleep_for(birth_tick);
    }
}

Status FileEditor::for_each_block(std::int64_t block, double share_done, double share, Work &work,
                                  const TakeBlock &take)
{
    const auto size = static_cast<std::size_t>(record_size_);
    const std::int64_t at_once = std::max<std::int64_t>(1, read_bytes / (record_size_ * block)) * block;
    std::string buffer;
    for (std::int64_t first = 0; first < count_; first += at_once) {
        const std::int64_t end = std::min(count_, first + at_once);
        buffer.resize(static_cast<std::size_t>(end - first) * size);
        const auto got = target_.file->read_at(first * record_size_, std::span<char>(buffer));
        if (!got.ok())
            return got.status();
        if (*got < buffer.size())
            return Status(Code::Io, "the file was cut short while it was read");
        const std::string_view lines = buffer;
        for (std::int64_t begin = first; begin < end; begin += block)
            if (Status taken = take(begin, lines.substr(static_cast<std::size_t>(begin - first) * size,
                                                        static_cast<std::size_t>(block) * size));
                !taken.ok())
                return taken;
        work.advance_to(share_done + share * static_cast<double>(end) / static_cast<double>(count_));
        if (Status asked = work.poll(); !asked.ok())
            return asked;
    }
    return Status();
}

Status FileEditor::for_each_record(double share_done, double share, Work &work, const TakeRecord &take)
{
    return for_each_block(1, share_done, share, work, [&](std::int64_t number, std::string_view line) {
        if (line.find('\n') != line.size() - 1)
            return Status(Code::Format,
                          concat("record ", number, " has a line feed out of its place; mend the file"));
        return take(number, line);
    });
}

Status FileEditor::copy_others(const std::vector<std::int64_t> &left_out, WritableFile &to, Work &work)
{
    std::string kept;
    std::int64_t written_bytes = 0;
    const auto write_kept = [&]() -> Status {
        if (Status written = write_all(to, written_bytes, kept); !written.ok())
            return written;
        written_bytes += static_cast<std::int64_t>(kept.size());
        kept.clear();
        return Status();
    };
    auto next = left_out.begin();
    Status done = for_each_record(0.4, 0.6, work, [&](std::int64_t number, std::string_view line) {
        if (next != left_out.end() && *next == number) {
            ++next;
            return Status();
        }
        kept += line;
        return kept.size() >= static_cast<std::size_t>(read_bytes) ? write_kept() : Status();
    });
    return done.ok() ? write_kept() : done;
}

// The new file is locked before it gets its name, so that nobody changes it before we know it as ours. It is
// always forced to the disk first: a name that leads to nothing would lose what the old file had there long
// since.
Status FileEditor::put_in_place(Target replacement, const std::string &temporary_path, Work &work)
{
    if (Status given = replacement.file->take_permissions(target_.real_path); !given.ok())
        return given;
    if (Status forced = replacement.file->sync(); !forced.ok())
        return forced;
    if (policy_.lock)
        if (Status locked = wait_for_lock(*replacement.file, writers_lock, temporary_path, work);
            !locked.ok())
            return locked;
    if (Status renamed = storage_.files.rename(temporary_path, target_.real_path); !renamed.ok())
        return renamed;
    target_ = std::move(replacement); // closing the old file lets those go on who wait for it
    count_ = records_.count_records();
    return Status();
}

Result<FileEditor::Replaced> FileEditor::replace(const LeaveOut &leave_out, Work &work)
{
    Replaced replaced;
    const auto failed = [this](const Status &why) {
        return why.code() == Code::Cancelled ? why : said(why, "cannot be crunched");
    };
    Status done = for_each_record(0, 0.4, work, [&](std::int64_t number, std::string_view line) {
        if (leave_out(line.substr(0, line.size() - 1)))
            replaced.left_out.push_back(number);
        return Status();
    });
    if (!done.ok())
        return failed(done);
    // Not before it is known that the records are whole: a file that can't be crunched stays as it is.
    const std::int64_t read = count_;
    if (Status mended = mend_end(); !mended.ok())
        return mended;
    for (std::int64_t number = read; number < count_; ++number) {
        const auto text = record(number);
        if (!text.ok())
            return failed(text.status());
        if (leave_out(*text))
            replaced.left_out.push_back(number);
    }
    replaced.records = count_;
    if (replaced.left_out.empty())
        return replaced;
    const std::string temporary_path = replacement_path();
    auto replacement = make_replacement(temporary_path);
    if (!replacement.ok())
        return failed(replacement.status());
    done = copy_others(replaced.left_out, *replacement->file, work);
    if (done.ok())
        done = put_in_place(std::move(*replacement), temporary_path, work);
    if (!done.ok()) {
        static_cast<void>(storage_.files.remove(temporary_path).ok());
        return failed(done);
    }
    if (policy_.force_to_disk)
        if (Status forced =
                storage_.files.sync_folder(LocatedPath::from(target_.real_path).folder().absolute);
            !forced.ok())
            replaced.forced = said(forced, "is crunched, but the disk may not know yet");
    return replaced;
}

} // namespace orvane
