#include "table/record_file.h"

#include "base/concat.h"
#include "storage/settled_file.h"
#include "storage/undo_note.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace orvane {

namespace {

constexpr std::int64_t look_interval = 100'000'000; // nanoseconds
// Times of files come from a clock with a coarse tick. A change within this time before a look may be
// followed by another one that leaves the same time.
constexpr std::int64_t youth = 50'000'000;
constexpr std::int64_t max_searched_width = 64
                                            << 10; // how far a line feed is looked for to tell a wrong width
constexpr int max_attempts = 4;                    // at a file that keeps changing under us
constexpr std::int64_t most_bytes_ahead = 4 << 20; // that are read ahead of a file
constexpr std::int64_t few_of_block = 16;          // a part of a block's records that is not worth reading it

std::int64_t clock_now(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

} // namespace

RecordFile::RecordFile(Storage &storage, std::vector<LocatedPath> places, std::int64_t record_size,
                       std::string expected, FilePolicy policy)
    : storage_(storage), places_(std::move(places)), record_size_(record_size),
      records_per_block_(
          std::max<std::int64_t>(1, static_cast<std::int64_t>(storage.limits.block_bytes) / record_size)),
      expected_(std::move(expected)), policy_(policy), owner_(storage.handles.new_owner()),
      version_(storage.blocks.new_version())
{
}

RecordFile::~RecordFile()
{
    storage_.blocks.drop(version_);
    storage_.columns.drop(version_);
    storage_.handles.close(owner_);
}

// ---- Looking where the file is -------------------------------------------------------------------

Result<RecordFile::Found> RecordFile::find() const
{
    for (std::size_t place = 0; place < places_.size(); ++place) {
        const auto state = storage_.files.state(places_[place].absolute);
        if (!state.ok())
            return Status(state.status().code(),
                          concat(places_[place].shown, ": cannot look for the file of ", expected_, ": ",
                                 state.status().message()));
        if (state->kind != FileKind::Missing)
            return Found{place, *state};
    }
    return Found{};
}

bool RecordFile::was_young(const FileState &state) const
{
    return state.kind == FileKind::File &&
           std::abs(clock_now(CLOCK_REALTIME) - state.modification_time) < youth;
}

void RecordFile::forget_content()
{
    storage_.blocks.drop(version_);
    storage_.columns.drop(version_);
    version_ = storage_.blocks.new_version();
    block_.reset();
    block_first_ = block_end_ = 0;
    ahead_.clear();
    checked_ = false;
    count_ = 0;
    refusal_ = Status();
}

void RecordFile::take(const Found &found)
{
    const bool same_file = looked_ && found.place == place_ && found.state.same_file(state_);
    if (!same_file)
        storage_.handles.close(owner_);
    if (!same_file || young_ || !(found.state == state_))
        forget_content();
    // An unfinished last line that goes is no record that goes.
    if (looked_ && present() && (!same_file || found.state.size / record_size_ < state_.size / record_size_))
        ++generation_;
    // What was certain of this very state stays certain, as after a change of our own.
    const bool certain = looked_ && !young_ && found.place == place_ && found.state == state_;
    young_ = !certain && was_young(found.state);
    place_ = found.place;
    state_ = found.state;
    looked_ = true;
}

Status RecordFile::look()
{
    const auto found = find();
    look_time_ = clock_now(CLOCK_MONOTONIC_COARSE);
    if (found.ok()) {
        look_failure_ = Status();
        take(*found);
        // What was refused may have been mended in a way that shows in no time stamp, as a permission is.
        if (!refusal_.ok())
            checked_ = false;
    } else {
        look_failure_ = found.status();
        take(Found{});
    }
    return look_failure_;
}

Status RecordFile::look_now_and_then()
{
    if (looked_ && clock_now(CLOCK_MONOTONIC_COARSE) - look_time_ < look_interval)
        return look_failure_;
    return look();
}

void RecordFile::adopt(const FileState &state, std::int64_t first, std::int64_t end, bool certain)
{
    const std::int64_t last_block = (end - 1) / records_per_block_;
    for (std::int64_t block = first / records_per_block_; block <= last_block; ++block) {
        storage_.blocks.drop(version_, block);
        if (block_first_ == block * records_per_block_) {
            block_.reset();
            block_first_ = block_end_ = 0;
        }
    }
    ahead_.clear();
    state_ = state;
    young_ = !certain && was_young(state);
    count_ = state.size / record_size_;
}

Result<std::unique_ptr<RandomAccessFile>> RecordFile::open_settled() const
{
    auto file = storage_.files.open(path().absolute);
    if (!file.ok())
        return Status(file.status().code(), concat(path().shown, ": cannot be opened to read ", expected_,
                                                   ": ", file.status().message()));
    const auto real_path = storage_.files.real_path(path().absolute);
    return std::unique_ptr<RandomAccessFile>(
        std::make_unique<SettledFile>(storage_.files, std::move(*file), policy_,
                                      undo_note_path(real_path.ok() ? *real_path : path().absolute)));
}

Result<std::unique_ptr<RandomAccessFile>> RecordFile::open_beside() const
{
    auto file = open_settled();
    if (!file.ok())
        return file;
    const auto state = (*file)->state();
    if (!state.ok())
        return state.status();
    if (!(*state == state_))
        file->reset();
    return file;
}

// ---- Whether it is of the right form -------------------------------------------------------------

// The open file. When what is opened is not what was looked at (it was replaced in between), the look is
// repeated first.
Result<RandomAccessFile *> RecordFile::handle()
{
    if (RandomAccessFile *open = storage_.handles.find(owner_))
        return open;
    for (int attempt = 0; attempt < max_attempts; ++attempt) {
        auto file = open_settled();
        if (!file.ok())
            return file.status();
        const auto state = (*file)->state();
        if (!state.ok())
            return state.status();
        if (state->same_file(state_))
            return storage_.handles.keep(owner_, std::move(*file));
        if (Status looked = look(); !looked.ok())
            return looked;
        if (Status kind = refuse_kind(); !kind.ok())
            return kind;
    }
    return Status(Code::Io, concat(path().shown, ": is replaced again and again while it is opened; ",
                                   "try once the other program is done"));
}

Status RecordFile::refuse_kind() const
{
    if (state_.kind == FileKind::Directory)
        return Status(Code::Format, concat(path().shown, ": is a directory where the file of ", expected_,
                                           " is expected; move it away"));
    if (state_.kind == FileKind::Other)
        return Status(Code::Format,
                      concat(path().shown, ": is not a regular file, as that of ", expected_, " has to be"));
    if (state_.kind == FileKind::Missing)
        return Status(Code::NotFound, concat(path().shown, ": the file of ", expected_, " is gone"));
    return Status();
}

Status RecordFile::wrong_width(std::int64_t found, bool carriage_return, std::int64_t line) const
{
    if (carriage_return && found == record_size_ + 1)
        return Status(Code::Format,
                      concat(path().shown, ":", line, ": lines end with a carriage return and a ",
                             "line feed, a line feed alone is expected; convert the line ends"));
    return Status(Code::Format,
                  concat(path().shown, ":", line, ": a record is ", found > 0 ? "" : "more than ",
                         found > 0 ? found - 1 : max_searched_width, " bytes wide where ", expected_,
                         " expects ", record_size_ - 1,
                         " (and a line feed); open the file with the schema that ",
                         "it was written for, or mend it"));
}

Status RecordFile::check_first_record(RandomAccessFile &file)
{
    std::string head(static_cast<std::size_t>(std::min(state_.size, record_size_)), '\0');
    auto got = file.read_at(0, std::span<char>(head));
    if (!got.ok())
        return got.status();
    head.resize(*got);
    auto line_feed = head.find('\n');
    if (line_feed == static_cast<std::size_t>(record_size_) - 1)
        return Status();
    if (line_feed == std::string::npos) {
        if (static_cast<std::int64_t>(head.size()) < record_size_)
            return Status(); // an unfinished first line
        head.resize(static_cast<std::size_t>(std::min(state_.size, max_searched_width)));
        got = file.read_at(0, std::span<char>(head));
        if (!got.ok())
            return got.status();
        head.resize(*got);
        line_feed = head.find('\n');
        if (line_feed == std::string::npos)
            return wrong_width(static_cast<std::int64_t>(head.size()) < max_searched_width
                                   ? static_cast<std::int64_t>(head.size()) + 1
                                   : 0,
                               false, 1);
    }
    const bool carriage_return = line_feed > 0 && head[line_feed - 1] == '\r';
    return wrong_width(static_cast<std::int64_t>(line_feed) + 1, carriage_return, 1);
}

// A line of another width anywhere before shifts the last record's line feed, unless two mend each other.
Status RecordFile::check_last_record(RandomAccessFile &file)
{
    const std::int64_t count = state_.size / record_size_;
    char last = '\n';
    if (count > 1) {
        const auto got = file.read_at(count * record_size_ - 1, std::span<char>(&last, 1));
        if (!got.ok())
            return got.status();
        if (*got == 0)
            return Status(); // cut short since; reading records will tell
    }
    if (last == '\n')
        return Status();
    return Status(Code::Format,
                  concat(path().shown, ": the first record is ", record_size_ - 1, " bytes wide, as ",
                         expected_, " expects, but byte ", count * record_size_ - 1, ", where record ",
                         count - 1,
                         " would end, is no line feed: a line before it is of another width; mend the file"));
}

Status RecordFile::check_form()
{
    if (Status kind = refuse_kind(); !kind.ok())
        return kind;
    if (state_.size == 0)
        return Status();
    const auto file = handle();
    if (!file.ok())
        return file.status();
    // While the file was opened its state may have been looked at again.
    if (Status first = check_first_record(**file); !first.ok())
        return first;
    return check_last_record(**file);
}

std::int64_t RecordFile::count_records()
{
    if (Status looked = look(); !looked.ok()) {
        refusal_ = looked;
        count_ = 0;
        return 0;
    }
    if (checked_)
        return count_;
    refusal_ = present() ? check_form() : Status();
    if (refusal_.code() == Code::NotFound) { // it vanished since it was looked at
        take(Found{});
        refusal_ = Status();
    }
    checked_ = true;
    count_ = refusal_.ok() && present() ? state_.size / record_size_ : 0;
    return count_;
}

// ---- Reading records -----------------------------------------------------------------------------

Result<std::string_view> RecordFile::record(std::int64_t number)
{
    if (!looked_ || clock_now(CLOCK_MONOTONIC_COARSE) - look_time_ >= look_interval)
        count_records();
    if (number >= block_first_ && number < block_end_)
        return record_in_current_block(number);
    for (int attempt = 0; attempt < max_attempts; ++attempt) {
        if (!checked_ || number >= count_)
            count_records();
        if (!refusal_.ok())
            return refusal_;
        if (number < 0 || number >= count_)
            return gone(number);
        if (const char *ahead = find_ahead(number))
            return checked_record(number, {ahead, static_cast<std::size_t>(record_size_)});
        if (Status loaded = load_block(number / records_per_block_); !loaded.ok())
            return loaded;
        if (number >= block_first_ && number < block_end_)
            return record_in_current_block(number);
    }
    return Status(Code::Io, concat(path().shown, ": keeps changing while record ", number,
                                   " is read; try once the other program is done"));
}

Result<std::string_view> RecordFile::record_in_current_block(std::int64_t number) const
{
    const auto size = static_cast<std::size_t>(record_size_);
    const std::string_view line(block_->bytes.data() + static_cast<std::size_t>(number - block_first_) * size,
                                size);
    return block_->well_formed ? line.substr(0, size - 1) : checked_record(number, line);
}

Result<std::string_view> RecordFile::checked_record(std::int64_t number, std::string_view line) const
{
    if (line.find('\n') != line.size() - 1)
        return misplaced_line_feed(number, line);
    return line.substr(0, line.size() - 1);
}

// Makes the block current. One that turns out shorter than the file was is left out, and the file is to be
// looked at again.
Status RecordFile::load_block(std::int64_t block_number)
{
    const std::int64_t first = block_number * records_per_block_;
    const std::int64_t records = std::min(records_per_block_, count_ - first);
    auto block = storage_.blocks.find(version_, block_number);
    if (!block) {
        const FileVersion version = version_;
        const auto file = handle();
        if (!file.ok())
            return file.status();
        if (version_ != version) // opening found another file
            return Status();
        auto read = std::make_shared<Block>();
        read->bytes.resize(static_cast<std::size_t>(records * record_size_));
        const auto got = (*file)->read_at(first * record_size_, std::span<char>(read->bytes));
        if (!got.ok())
            return Status(got.status().code(), concat(path().shown, ": cannot read records ", first, " to ",
                                                      first + records - 1, ": ", got.status().message()));
        if (*got < read->bytes.size()) {
            forget_content();
            return Status();
        }
        read->well_formed =
            std::count(read->bytes.begin(), read->bytes.end(), '\n') == static_cast<std::ptrdiff_t>(records);
        for (std::int64_t i = 1; i <= records && read->well_formed; ++i)
            read->well_formed = read->bytes[static_cast<std::size_t>(i * record_size_ - 1)] == '\n';
        storage_.blocks.keep(version_, block_number, read);
        block = std::move(read);
    }
    block_ = std::move(block);
    block_first_ = first;
    block_end_ = first + records;
    return Status();
}

Status RecordFile::gone(std::int64_t number) const
{
    if (!present())
        return Status(Code::NotFound,
                      concat(path().shown, ": record ", number, " is not there: there is no such file"));
    return Status(Code::NotFound, concat(path().shown, ": record ", number, " is not there: the file has ",
                                         count_, count_ == 1 ? " record" : " records"));
}

Status RecordFile::misplaced_line_feed(std::int64_t number, std::string_view line) const
{
    const auto found = line.find('\n');
    const std::int64_t start = number * record_size_;
    if (found == std::string_view::npos)
        return Status(Code::Format,
                      concat(path().shown, ": record ", number, ", bytes ", start, " to ",
                             start + record_size_ - 1, ", has no line feed at its end; mend the file"));
    return Status(Code::Format,
                  concat(path().shown, ": record ", number, ", bytes ", start, " to ",
                         start + record_size_ - 1, ", has a line feed at byte ",
                         start + static_cast<std::int64_t>(found), ", before its end; mend the file"));
}

// ---- Reading ahead -------------------------------------------------------------------------------

const char *RecordFile::find_ahead(std::int64_t number) const
{
    const auto found = std::lower_bound(ahead_.begin(), ahead_.end(), number);
    return found == ahead_.end() || *found != number
               ? nullptr
               : ahead_bytes_.data() + (found - ahead_.begin()) * static_cast<std::ptrdiff_t>(record_size_);
}

// Those whose blocks are not in memory, and are wanted for few records.
std::vector<std::int64_t> RecordFile::worth_reading_ahead(std::span<const std::int64_t> numbers)
{
    std::vector<std::int64_t> worth;
    for (std::size_t at = 0; at < numbers.size();) {
        const std::int64_t block = numbers[at] / records_per_block_;
        std::size_t end = at + 1;
        while (end < numbers.size() && numbers[end] / records_per_block_ == block)
            ++end;
        const bool few = static_cast<std::int64_t>(end - at) * few_of_block <= records_per_block_;
        if (few && !storage_.blocks.find(version_, block))
            worth.insert(worth.end(), numbers.begin() + static_cast<std::ptrdiff_t>(at),
                         numbers.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
    return worth;
}

void RecordFile::read_ahead(std::span<const std::int64_t> numbers)
{
    count_records();
    if (!refusal_.ok() || numbers.empty() || numbers.front() < 0 || numbers.back() >= count_)
        return;
    const auto most = static_cast<std::size_t>(std::max<std::int64_t>(1, most_bytes_ahead / record_size_));
    std::vector<std::int64_t> worth = worth_reading_ahead(numbers.subspan(0, std::min(numbers.size(), most)));
    if (std::includes(ahead_.begin(), ahead_.end(), worth.begin(), worth.end()))
        return;
    ahead_.clear();
    const FileVersion version = version_;
    const auto file = handle();
    if (!file.ok() || version_ != version)
        return;
    const auto size = static_cast<std::size_t>(record_size_);
    ahead_bytes_.resize(worth.size() * size);
    std::vector<FilePiece> pieces;
    for (std::size_t i = 0; i < worth.size(); ++i) {
        const std::span<char> place(ahead_bytes_.data() + i * size, size);
        if (i > 0 && worth[i] == worth[i - 1] + 1)
            pieces.back().buffer = {pieces.back().buffer.data(), pieces.back().buffer.size() + size};
        else
            pieces.push_back({worth[i] * record_size_, place});
    }
    if (!(*file)->read_scattered(pieces).ok())
        return;
    const bool all_there = std::all_of(pieces.begin(), pieces.end(), [](const FilePiece &piece) {
        return piece.got == piece.buffer.size();
    });
    if (all_there)
        ahead_ = std::move(worth);
}

} // namespace orvane
