#include "storage/settled_file.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

namespace orvane {

namespace {

constexpr auto longest_wait = std::chrono::milliseconds(200);
constexpr auto pause_between = std::chrono::microseconds(50);
constexpr int max_readings = 100;
constexpr std::size_t pieces_under_lock = 64; // that lie here and there

// The part of a note that lies in what was read is put over it.
void put_over(const UndoNote &note, std::int64_t offset, std::span<char> read)
{
    const std::int64_t first = std::max(offset, note.offset);
    const std::int64_t end = std::min(offset + static_cast<std::int64_t>(read.size()),
                                      note.offset + static_cast<std::int64_t>(note.bytes.size()));
    if (first < end)
        std::memcpy(read.data() + (first - offset), note.bytes.data() + (first - note.offset),
                    static_cast<std::size_t>(end - first));
}

} // namespace

SettledFile::SettledFile(FileSystem &files, std::unique_ptr<RandomAccessFile> file, FilePolicy policy,
                         std::string note_path)
    : files_(files), file_(std::move(file)), policy_(policy), note_path_(std::move(note_path))
{
}

std::int64_t SettledFile::take_slot()
{
    static_assert(reader_slots == 64);
    for (;;) {
        std::uint64_t used = slots_.load();
        const int slot = std::countr_one(used);
        if (slot == reader_slots)
            std::this_thread::yield();
        else if (slots_.compare_exchange_weak(used, used | (std::uint64_t{1} << slot)))
            return slot;
    }
}

void SettledFile::leave_slot(std::int64_t slot)
{
    slots_.fetch_and(~(std::uint64_t{1} << slot));
}

class SettledFile::ReaderLock
{
public:
    explicit ReaderLock(SettledFile &file) : file_(file), slot_(file.take_slot())
    {
        const auto start = std::chrono::steady_clock::now();
        locked_ = try_reader_lock(*file_.file_, slot_);
        while (locked_.ok() && !*locked_ && std::chrono::steady_clock::now() - start < longest_wait) {
            std::this_thread::sleep_for(pause_between);
            locked_ = try_reader_lock(*file_.file_, slot_);
        }
    }
    ~ReaderLock()
    {
        if (is_held())
            let_go(*file_.file_, reader_lock(slot_));
        file_.leave_slot(slot_);
    }
    ReaderLock(const ReaderLock &) = delete;
    ReaderLock &operator=(const ReaderLock &) = delete;

    bool is_held() const { return locked_.ok() && *locked_; }
    bool is_possible() const { return locked_.ok(); }

private:
    SettledFile &file_;
    const std::int64_t slot_;
    Result<bool> locked_ = false;
};

Result<std::size_t> SettledFile::read_at(std::int64_t offset, std::span<char> buffer)
{
    if (!policy_.lock)
        return read_with_note(offset, buffer);
    const ReaderLock lock(*this);
    return lock.is_held() ? read_with_note(offset, buffer) : read_without_lock(lock, offset, buffer);
}

Result<std::int64_t> SettledFile::read_pieces(std::int64_t offset, std::int64_t size, std::span<char> buffer,
                                              const TakePiece &take)
{
    if (!policy_.lock)
        return RandomAccessFile::read_pieces(offset, size, buffer, take);
    const ReaderLock lock(*this);
    if (!lock.is_held())
        return pieces_read_by(
            [&](std::int64_t at, std::span<char> piece) { return read_without_lock(lock, at, piece); },
            offset, size, buffer, take);
    // Nobody changes bytes under our lock: what is written down now is so until it ends, and a note that
    // comes later is about bytes that are still there.
    const auto found = note();
    if (!found.ok())
        return found.status();
    return pieces_read_by(
        [&](std::int64_t at, std::span<char> piece) {
            auto got = file_->read_at(at, piece);
            if (got.ok() && *found)
                put_over(**found, at, piece.first(*got));
            return got;
        },
        offset, size, buffer, take);
}

Status SettledFile::read_scattered(std::span<FilePiece> pieces)
{
    if (!policy_.lock)
        return RandomAccessFile::read_scattered(pieces);
    for (std::size_t done = 0; done < pieces.size(); done += pieces_under_lock) {
        const auto some = pieces.subspan(done, std::min(pieces_under_lock, pieces.size() - done));
        if (Status read = read_under_lock(some); !read.ok())
            return read;
    }
    return Status();
}

Status SettledFile::read_under_lock(std::span<FilePiece> pieces)
{
    const ReaderLock lock(*this);
    const Result<std::optional<UndoNote>> found = lock.is_held() ? note() : std::optional<UndoNote>();
    if (!found.ok())
        return found.status();
    for (FilePiece &piece : pieces) {
        const auto got = lock.is_held() ? file_->read_at(piece.offset, piece.buffer)
                                        : read_without_lock(lock, piece.offset, piece.buffer);
        if (!got.ok())
            return got.status();
        piece.got = *got;
        if (*found)
            put_over(**found, piece.offset, piece.buffer.first(*got));
    }
    return Status();
}

Result<std::optional<UndoNote>> SettledFile::note() const
{
    auto found = find_undo_note(files_, note_path_);
    if (!found.ok() || !*found)
        return std::optional<UndoNote>(); // one that can't be read, by whom it isn't meant for, says nothing
    const auto about = file_->state();
    if (!about.ok())
        return about.status();
    return (*found)->is_about(*about) ? std::move(*found) : std::nullopt;
}

Result<std::size_t> SettledFile::read_with_note(std::int64_t offset, std::span<char> buffer)
{
    auto got = file_->read_at(offset, buffer);
    if (!got.ok())
        return got;
    const auto found = note();
    if (!found.ok())
        return found.status();
    if (*found)
        put_over(**found, offset, buffer.first(*got));
    return got;
}

// Where the disk knows no locks nobody can change records under one.
Result<std::size_t> SettledFile::read_without_lock(const ReaderLock &lock, std::int64_t offset,
                                                   std::span<char> buffer)
{
    return lock.is_possible() ? read_twice(offset, buffer) : read_with_note(offset, buffer);
}

Result<std::size_t> SettledFile::read_twice(std::int64_t offset, std::span<char> buffer)
{
    std::vector<char> before(buffer.size());
    std::size_t length_before = 0;
    for (int reading = 0;; ++reading) {
        const auto got = read_with_note(offset, buffer);
        if (!got.ok() || reading == max_readings)
            return got;
        if (reading > 0 && *got == length_before &&
            std::equal(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(*got), buffer.begin()))
            return got;
        std::copy(buffer.begin(), buffer.end(), before.begin());
        length_before = *got;
    }
}

} // namespace orvane
