#include "storage/settled_file.h"

#include "storage/undo_note.h"

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

Result<std::size_t> SettledFile::read_at(std::int64_t offset, std::span<char> buffer)
{
    if (!policy_.lock)
        return read_with_note(offset, buffer);
    const std::int64_t slot = take_slot();
    const auto start = std::chrono::steady_clock::now();
    auto locked = try_reader_lock(*file_, slot);
    while (locked.ok() && !*locked && std::chrono::steady_clock::now() - start < longest_wait) {
        std::this_thread::sleep_for(pause_between);
        locked = try_reader_lock(*file_, slot);
    }
    if (locked.ok() && *locked) {
        auto got = read_with_note(offset, buffer);
        let_go(*file_, reader_lock(slot));
        leave_slot(slot);
        return got;
    }
    leave_slot(slot);
    // Where the disk knows no locks nobody can change records under one.
    return locked.ok() ? read_twice(offset, buffer) : read_with_note(offset, buffer);
}

Result<std::size_t> SettledFile::read_with_note(std::int64_t offset, std::span<char> buffer)
{
    const auto got = file_->read_at(offset, buffer);
    if (!got.ok())
        return got;
    const auto note = find_undo_note(files_, note_path_);
    if (!note.ok() || !*note)
        return got; // a note that can't be read, by whom it isn't meant for, says nothing
    const auto about = file_->state();
    if (!about.ok())
        return about.status();
    if ((*note)->is_about(*about))
        put_over(**note, offset, buffer.subspan(0, *got));
    return got;
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
