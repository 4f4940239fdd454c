// Taking out of a table's file what is no record, without losing it.
#include "edit/file_editor.h"

#include "base/concat.h"
#include "table/record_lines.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr std::int64_t copied_at_once = 1 << 20;
constexpr int max_names = 1000; // that are tried for one second

// "20180131T014959Z"
std::string time_stamp()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts));
}

// A file that is written from its beginning on, and removed unless it is kept.
class KeptFile
{
public:
    // Makes "STEM-TIME", or with a number behind it.
    static Result<std::unique_ptr<KeptFile>> make(FileSystem &files, const std::string &stem)
    {
        const std::string first = concat(stem, '-', time_stamp());
        std::string path = first;
        for (int number = 1;; ++number) {
            auto file = files.open_to_write(path, Creation::New);
            if (file.ok())
                return std::unique_ptr<KeptFile>(new KeptFile(files, path, std::move(*file)));
            const auto there = files.state(path);
            if (number == max_names || !there.ok() || there->kind == FileKind::Missing)
                return Status(file.status().code(), concat(path, ": ", file.status().message()));
            path = concat(first, '-', number);
        }
    }
    ~KeptFile()
    {
        if (!kept_)
            static_cast<void>(files_.remove(path_).ok());
    }
    KeptFile(const KeptFile &) = delete;
    KeptFile &operator=(const KeptFile &) = delete;

    const std::string &path() const { return path_; }
    WritableFile &file() { return *file_; }
    void keep() { kept_ = true; }

    Status append(std::string_view bytes)
    {
        Status written = write_all(*file_, size_, bytes);
        size_ += static_cast<std::int64_t>(bytes.size());
        return written;
    }
    // Appends bytes of another file.
    Status append(RandomAccessFile &from, std::int64_t offset, std::int64_t length, Work &work)
    {
        std::string piece;
        for (const std::int64_t end = offset + length; offset < end;) {
            piece.resize(static_cast<std::size_t>(std::min(end - offset, copied_at_once)));
            const auto got = from.read_at(offset, std::span<char>(piece));
            if (!got.ok())
                return got.status();
            if (*got < piece.size())
                return Status(Code::Io, "the file was cut short while it was read");
            if (Status written = append(piece); !written.ok())
                return written;
            if (Status asked = work.poll(); !asked.ok())
                return asked;
            offset += static_cast<std::int64_t>(piece.size());
        }
        return Status();
    }

private:
    KeptFile(FileSystem &files, std::string path, std::unique_ptr<WritableFile> file)
        : files_(files), path_(std::move(path)), file_(std::move(file))
    {
    }

    FileSystem &files_;
    const std::string path_;
    std::unique_ptr<WritableFile> file_;
    std::int64_t size_ = 0;
    bool kept_ = false;
};

} // namespace

// What the file holds, as far as it matters here.
struct FileEditor::Lines {
    std::int64_t records = 0;
    std::int64_t bad = 0;  // lines that end with a line feed
    BadLine last;          // one that doesn't, when its length is above 0
    std::int64_t size = 0; // bytes of the file
    bool wants_line_feed(std::int64_t record_size) const { return last.length == record_size - 1; }
};

Result<FileEditor::Lines> FileEditor::look_through(std::int64_t size, Work &work)
{
    Lines found;
    found.size = size;
    RecordLines lines(*target_.file, record_size_, size);
    Status read = lines.read(
        [&](const LineRun &run) {
            found.records += run.count;
            return work.poll();
        },
        [&](const BadLine &line) {
            if (line.ended)
                ++found.bad;
            else
                found.last = line;
            return work.poll();
        });
    if (!read.ok())
        return read;
    return found;
}

// What goes out of the table, and the table itself where more than its end goes, is on the disk first.
Status FileEditor::put_aside(const Lines &lines, const std::string &stem, Mended &mended, Work &work)
{
    FileSystem &files = storage_.files;
    auto aside = KeptFile::make(files, stem + ".damaged");
    if (!aside.ok())
        return aside.status();
    std::vector<std::unique_ptr<KeptFile>> kept;
    if (lines.bad == 0) {
        if (Status written = (*aside)->append(*target_.file, lines.last.offset, lines.last.length, work);
            !written.ok())
            return written;
        mended.lines = 1;
        mended.bytes = lines.last.length;
    } else {
        auto copy = KeptFile::make(files, stem + ".before");
        if (!copy.ok())
            return copy.status();
        if (Status copied = (*copy)->append(*target_.file, 0, lines.size, work); !copied.ok())
            return copied;
        // Who may not read the table shall not read its copy.
        if (Status given = (*copy)->file().take_permissions(target_.real_path); !given.ok())
            return given;
        if (Status forced = (*copy)->file().sync(); !forced.ok())
            return forced;
        RecordLines reading(*target_.file, record_size_, lines.size);
        Status read = reading.read([](const LineRun &) { return Status(); },
                                   [&](const BadLine &line) {
                                       if (!line.ended && lines.wants_line_feed(record_size_))
                                           return Status();
                                       ++mended.lines;
                                       mended.bytes += line.length;
                                       return (*aside)->append(*target_.file, line.offset, line.length, work);
                                   });
        if (!read.ok())
            return read;
        mended.copy = (*copy)->path();
        kept.push_back(std::move(*copy));
    }
    if (Status given = (*aside)->file().take_permissions(target_.real_path); !given.ok())
        return given;
    if (Status forced = (*aside)->file().sync(); !forced.ok())
        return forced;
    if (Status forced = files.sync_folder(LocatedPath::from(target_.real_path).folder().absolute);
        !forced.ok())
        return forced;
    mended.put_aside = (*aside)->path();
    kept.push_back(std::move(*aside));
    for (const auto &file : kept)
        file->keep();
    return Status();
}

// Puts a file of the records alone in the place of this one.
Status FileEditor::leave_records(const Lines &lines, std::int64_t size, Work &work)
{
    const std::string temporary_path = replacement_path();
    auto replacement = make_replacement(temporary_path);
    if (!replacement.ok())
        return replacement.status();
    std::int64_t written_bytes = 0;
    WritableFile &to = *replacement->file;
    const auto write = [&](std::string_view bytes) {
        Status written = write_all(to, written_bytes, bytes);
        written_bytes += static_cast<std::int64_t>(bytes.size());
        return written;
    };
    RecordLines reading(*target_.file, record_size_, size);
    Status done = reading.read(
        [&](const LineRun &run) {
            Status written =
                write(std::string_view(run.records, static_cast<std::size_t>(run.count * record_size_)));
            return written.ok() ? work.poll() : written;
        },
        [](const BadLine &) { return Status(); });
    if (done.ok() && lines.wants_line_feed(record_size_)) {
        std::string last(static_cast<std::size_t>(lines.last.length), '\0');
        const auto got = target_.file->read_at(lines.last.offset, std::span<char>(last));
        done = !got.ok()            ? got.status()
               : *got < last.size() ? Status(Code::Io, "the file was cut short while it was read")
                                    : write(last + '\n');
    }
    if (done.ok())
        done = put_in_place(std::move(*replacement), temporary_path, work);
    if (!done.ok())
        static_cast<void>(storage_.files.remove(temporary_path).ok());
    return done;
}

Result<FileEditor::Mended> FileEditor::mend(Work &work)
{
    const auto failed = [this](const Status &why) {
        return why.code() == Code::Cancelled ? why : said(why, "cannot be mended");
    };
    const auto state = target_.file->state();
    if (!state.ok())
        return failed(state.status());
    const auto lines = look_through(state->size, work);
    if (!lines.ok())
        return failed(lines.status());
    Mended mended;
    const bool ends_in_record = lines->last.length == 0;
    mended.ended_line = !ends_in_record && lines->wants_line_feed(record_size_);
    if (lines->bad == 0 && ends_in_record)
        return mended;
    const bool may_be_other = lines->bad > 0 || lines->last.length >= record_size_;
    if (lines->records == 0 && may_be_other && !mended.ended_line)
        return Status(Code::Format,
                      concat(records_.path().shown, ": cannot be mended: none of its lines is a record of ",
                             record_size_ - 1, " bytes; it may be of another schema"));
    const std::string folder = LocatedPath::from(target_.real_path).folder().absolute;
    if (lines->bad == 0 && mended.ended_line) {
        Status done = write_all(*target_.file, lines->size, std::string_view("\n"));
        if (done.ok())
            done = target_.file->sync();
        if (!done.ok()) {
            static_cast<void>(target_.file->truncate(lines->size).ok());
            return failed(done);
        }
    } else {
        if (Status kept = put_aside(*lines, target_.real_path, mended, work); !kept.ok())
            return failed(kept);
        Status done = lines->bad > 0 ? leave_records(*lines, lines->size, work)
                                     : target_.file->truncate(lines->last.offset);
        if (!done.ok()) {
            // The table is as it was, and what was kept of it is all in there.
            for (const std::string &path : {mended.put_aside, mended.copy})
                static_cast<void>(path.empty() || storage_.files.remove(path).ok());
            return failed(done);
        }
        done = lines->bad > 0 ? storage_.files.sync_folder(folder) : target_.file->sync();
        if (!done.ok())
            return failed(done);
    }
    count_ = records_.count_records();
    return mended;
}

} // namespace orvane
