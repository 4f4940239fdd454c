// A table file as readers read it: never in the middle of a change in place. The system lets a reader see a
// write half done, so that bytes which may change are read under a lock that excludes who changes them.
#pragma once

#include "storage/file_locks.h"

#include <atomic>
#include <memory>
#include <string>

namespace orvane {

class SettledFile : public RandomAccessFile
{
public:
    // `note_path` is where a change in place leaves what was there before, while it is not done.
    SettledFile(FileSystem &files, std::unique_ptr<RandomAccessFile> file, FilePolicy policy,
                std::string note_path);

    // Of several threads at a time. Who changes records holds them off for the time of one write; when a lock
    // stays for longer, of a program that was stopped or of one that locks for other reasons, the bytes are
    // read until they are twice the same.
    Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) override;
    Result<FileState> state() override { return file_->state(); }
    Result<bool> try_lock(LockKind kind, LockRange range) override { return file_->try_lock(kind, range); }
    Status unlock(LockRange range) override { return file_->unlock(range); }

private:
    Result<std::size_t> read_with_note(std::int64_t offset, std::span<char> buffer);
    Result<std::size_t> read_twice(std::int64_t offset, std::span<char> buffer);
    std::int64_t take_slot();
    void leave_slot(std::int64_t slot);

    FileSystem &files_;
    std::unique_ptr<RandomAccessFile> file_;
    const FilePolicy policy_;
    const std::string note_path_;
    std::atomic<std::uint64_t> slots_ = 0; // those in use
};

} // namespace orvane
