// The file of a base table: whole records of one width, found in the first folder that has it, kept true
// while other programs append to it, replace it, change it in place or cut it short.
#pragma once

#include "base/status.h"
#include "storage/file_locks.h"
#include "storage/located_path.h"
#include "storage/storage.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class RecordFile
{
public:
    // `places` are the paths where the file may be, in order of search; a new file goes to the first.
    // `expected` tells in messages whose width is expected: "table origin of schema css3.0".
    RecordFile(Storage &storage, std::vector<LocatedPath> places, std::int64_t record_size,
               std::string expected, FilePolicy policy = {});
    ~RecordFile();
    RecordFile(const RecordFile &) = delete;
    RecordFile &operator=(const RecordFile &) = delete;

    // Looks where the file is and what state it is in, reading nothing of it. A failure is that of a
    // folder that can't be searched.
    Status look();
    // As `look`, but no more often than every tenth of a second.
    Status look_now_and_then();

    // As of the last look:
    bool present() const { return state_.kind != FileKind::Missing; }
    // The file, or the one that would be made.
    const LocatedPath &path() const { return places_[place_]; }
    const FileState &state() const { return state_; }

    // Looks, and answers the number of whole records; an unfinished last line is none. A file that is
    // refused has none: `refusal` then says why. Reads at most two records, and none of a file known already.
    std::int64_t count_records();
    // Why the file is refused as of the last count: a wrong width, no permission, not a file.
    const Status &refusal() const { return refusal_; }

    // The text of a record without its line feed, valid until the next call of a member. Reads a block where
    // none has the record. A record that is not there (any more) is NotFound; one whose line feed is not in
    // its place is Format.
    Result<std::string_view> record(std::int64_t number);

    // Reads records that will be asked for, by ascending numbers, so that they are read together and, where
    // they lie far apart, without the blocks around them. What can't be read shows when it is asked for.
    void read_ahead(std::span<const std::int64_t> numbers);

    // Changes whenever the file's content may have: what was derived from it is then to be made anew.
    FileVersion version() const { return version_; }

    // Changes when the records are no longer those of before by their numbers: another file took the place,
    // or this one became shorter. Growth and changes in place leave it.
    std::uint64_t generation() const { return generation_; }

    // This process changed records in place, some of [first, end), or appended them, and nobody else anything
    // since the last look, as who holds the writers' lock knows. What was derived from other records still
    // holds. `certain` says that any later change will show in the file's state.
    void adopt(const FileState &state, std::int64_t first, std::int64_t end, bool certain);

    // Opens the file once more, to read all of it beside what goes on here: null when it is not in the state
    // of the last look any more.
    Result<std::unique_ptr<RandomAccessFile>> open_beside() const;

private:
    struct Found {
        std::size_t place = 0;
        FileState state;
    };
    Result<Found> find() const;
    void take(const Found &found);
    void forget_content();
    bool was_young(const FileState &state) const;

    Status check_form();
    Status refuse_kind() const;
    Status check_first_record(RandomAccessFile &file);
    Status check_last_record(RandomAccessFile &file);
    Status wrong_width(std::int64_t found, bool carriage_return, std::int64_t line) const;
    Result<RandomAccessFile *> handle();
    Result<std::unique_ptr<RandomAccessFile>> open_settled() const;

    Result<std::string_view> record_in_current_block(std::int64_t number) const;
    Result<std::string_view> checked_record(std::int64_t number, std::string_view line) const;
    const char *find_ahead(std::int64_t number) const;
    std::vector<std::int64_t> worth_reading_ahead(std::span<const std::int64_t> numbers);
    Status load_block(std::int64_t block_number);
    Status gone(std::int64_t number) const;
    Status misplaced_line_feed(std::int64_t number, std::string_view line) const;

    Storage &storage_;
    const std::vector<LocatedPath> places_;
    const std::int64_t record_size_;
    const std::int64_t records_per_block_;
    const std::string expected_;
    const FilePolicy policy_;
    const FileHandlePool::Owner owner_;

    std::size_t place_ = 0;
    FileState state_;
    FileVersion version_;
    std::uint64_t generation_ = 0;
    bool looked_ = false;
    bool young_ = false; // the file changed so shortly before the last look that its time may hide a change
    std::int64_t look_time_ = 0; // nanoseconds of the coarse monotonic clock
    Status look_failure_;

    bool checked_ = false; // form and count hold for state_
    std::int64_t count_ = 0;
    Status refusal_;

    std::shared_ptr<const Block> block_; // the one read last
    std::int64_t block_first_ = 0;       // its records: [first, end)
    std::int64_t block_end_ = 0;

    // Of this version, too:
    std::vector<std::int64_t> ahead_; // the records that were read ahead, ascending
    std::vector<char> ahead_bytes_;   // one behind the other
};

} // namespace orvane
