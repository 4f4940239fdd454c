// Changes a table's file, one change at a time under the writers' lock, so that every change is there whole
// or not at all and nothing of what other programs wrote is lost. docs/editing.md says what is guaranteed.
#pragma once

#include "storage/undo_note.h"
#include "table/record_file.h"
#include "work/work.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

class FileEditor
{
public:
    // All of them have to outlive the editor.
    FileEditor(Storage &storage, RecordFile &records, std::int64_t record_size, FilePolicy policy);

    // While it lives nobody else who locks changes the file, and what the record file says of it is true.
    class [[nodiscard]] Hold
    {
    public:
        explicit Hold(FileEditor &editor) : editor_(&editor) {}
        Hold(Hold &&other) noexcept : editor_(std::exchange(other.editor_, nullptr)) {}
        Hold &operator=(Hold &&) = delete;
        ~Hold()
        {
            if (editor_)
                editor_->end();
        }
        FileEditor &editor() const { return *editor_; }

    private:
        FileEditor *editor_;
    };

    enum class Purpose {
        Change, // of what is there: a table without a file is a failure
        Append, // a table without a file gets one in its first folder
        Mend,   // as Change, whatever the file holds: one that is refused, too
    };
    // Waits for the lock, asking the work's hook. A file that is refused is a failure with its reason.
    Result<Hold> begin(Purpose purpose, Work &work);

    // While it is held: ----------------------------------------------------------------------------

    std::int64_t count() const { return count_; }
    // The text of a record, without its line feed, as it is in the file.
    Result<std::string> record(std::int64_t number);
    // The lines of the records [first, first + count), each with its line feed where it should be: who takes
    // one asks check_line.
    Status read_run(std::int64_t first, std::int64_t count, std::string &lines);
    Status check_line(std::int64_t number, std::string_view line) const;
    // Goes through all records, each with its line feed, and tells the work's hook how far that is.
    using TakeRecord = std::function<Status(std::int64_t number, std::string_view line)>;
    Status for_each_record(double share_done, double share, Work &work, const TakeRecord &take);
    // The same in blocks of so many records, but the last; where line feeds stand is not looked at.
    using TakeBlock = std::function<Status(std::int64_t first, std::string_view lines)>;
    Status for_each_block(std::int64_t block, double share_done, double share, Work &work,
                          const TakeBlock &take);
    // Puts a record's text behind the last one and answers its number. After a failure the file is as it was.
    Result<std::int64_t> append(std::string_view text);
    // Puts a record's text in the place of another one of the same length. After a failure the file is as it
    // was.
    Status overwrite(std::int64_t number, std::string_view before, std::string_view after, Work &work);
    // The same for the lines of neighbouring records from `first` on, all at once: after a failure all are as
    // they were. Where no note can be made (docs/editing.md) the records are changed one after the other, and
    // the first of them may be done after a failure. Answers in `done` how many are.
    Status overwrite_run(std::int64_t first, std::string_view before, std::string_view after, Work &work,
                         std::int64_t &done);
    struct Replaced {
        std::int64_t records = 0;           // of the old file
        std::vector<std::int64_t> left_out; // of these, ascending; none: nothing was done
        Status forced;                      // a failure: it is done, but a machine that stops may undo it
    };
    // Puts a new file in the place of this one, without the records for which `leave_out` is true. At any
    // moment the one or the other is there, whole; after a failure it is the old one. What is held is then
    // the new file.
    using LeaveOut = std::function<bool(std::string_view record)>;
    Result<Replaced> replace(const LeaveOut &leave_out, Work &work);

    struct Mended {
        std::int64_t lines = 0;  // that were put aside
        std::int64_t bytes = 0;  // of them
        std::string put_aside;   // the file where they are; empty: none were
        std::string copy;        // the file as it was; empty: only its end was changed
        bool ended_line = false; // the last line wanted nothing but its line feed, and got it
    };
    // Takes out what is no record: its bytes go into a file QUAKES.ORIGIN.damaged-TIME first, and where other
    // lines follow them a copy of all into QUAKES.ORIGIN.before-TIME. All of it is on the disk before the
    // table changes, which is then replaced, or only shortened. A file without any record is left as it is.
    // What is held is the mended file.
    Result<Mended> mend(Work &work);

private:
    struct Lines;
    struct Target {
        std::unique_ptr<WritableFile> file;
        FileState identity;
        std::string real_path;
        bool made = false; // by us, while we hold it
    };

    void end();
    bool is_usable(Purpose purpose) const;
    Status open_target(Purpose purpose);
    Status lock_target(Work &work);
    bool target_is_current() const;
    Status take_back_unfinished_change(Work &work);
    Status mend_end();
    Status read_end(std::string &tail);
    Status undo_append(std::int64_t size, Status failure);
    bool may_be_cut_in_two(std::int64_t offset, std::size_t length) const;
    Status write_note(const UndoNote &note);
    enum class Note {
        IfPossible, // in a folder where nothing can be made the bytes are changed without one
        Needed,     // without one nothing is changed, and the failure says Permission
    };
    Status overwrite_span(std::int64_t offset, std::string_view before, std::string_view after, Note note,
                          Work &work, bool &begun);
    Status overwrite_differing(std::int64_t offset, std::string_view before, std::string_view after,
                               Note note, Work &work, bool &begun);
    Status overwrite_each(std::int64_t first, std::string_view before, std::string_view after, Work &work,
                          std::int64_t &done);
    Status write_settled(std::int64_t offset, std::string_view bytes, Work &work, bool &begun);
    void finish(std::int64_t first_changed, std::int64_t end_changed);
    Status said(const Status &failure, const char *what) const;

    Result<Lines> look_through(std::int64_t size, Work &work);
    Status put_aside(const Lines &lines, const std::string &stem, Mended &mended, Work &work);
    Status leave_records(const Lines &lines, std::int64_t size, Work &work);

    Status copy_others(const std::vector<std::int64_t> &left_out, WritableFile &to, Work &work);
    Status put_in_place(Target replacement, const std::string &temporary_path, Work &work);
    std::string replacement_path() const;
    Result<Target> make_replacement(const std::string &temporary_path);

    Storage &storage_;
    RecordFile &records_;
    const std::int64_t record_size_;
    const FilePolicy policy_;
    Target target_; // stays open in between
    std::int64_t count_ = 0;
};

} // namespace orvane
