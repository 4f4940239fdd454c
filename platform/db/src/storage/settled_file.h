// A table file as readers read it: never in the middle of a change in place. The system lets a reader see a
// write half done, so that bytes which may change are read under a lock that excludes who changes them.
#pragma once

#include "storage/file_locks.h"
#include "storage/undo_note.h"

#include <atomic>
#include <memory>
#include <optional>
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
    // All pieces are read under one lock, and taken under it: who changes records waits for it, so that they
    // should be some megabytes at most.
    Result<std::int64_t> read_pieces(std::int64_t offset, std::int64_t size, std::span<char> buffer,
                                     const TakePiece &take) override;
    // A lock for many of them: nobody is held off for longer than a large read takes.
    Status read_scattered(std::span<FilePiece> pieces) override;
    Result<FileState> state() override { return file_->state(); }
    Result<bool> try_lock(LockKind kind, LockRange range) override { return file_->try_lock(kind, range); }
    Status unlock(LockRange range) override { return file_->unlock(range); }

private:
    // A reader's lock as long as it lives, where one is to be had.
    class ReaderLock;

    // What is beside the file and about it.
    Result<std::optional<UndoNote>> note() const;
    Status read_under_lock(std::span<FilePiece> pieces);
    Result<std::size_t> read_with_note(std::int64_t offset, std::span<char> buffer);
    Result<std::size_t> read_twice(std::int64_t offset, std::span<char> buffer);
    Result<std::size_t> read_without_lock(const ReaderLock &lock, std::int64_t offset,
                                          std::span<char> buffer);
    std::int64_t take_slot();
    void leave_slot(std::int64_t slot);

    FileSystem &files_;
    std::unique_ptr<RandomAccessFile> file_;
    const FilePolicy policy_;
    const std::string note_path_;
    std::atomic<std::uint64_t> slots_ = 0; // those in use
};

} // namespace orvane
