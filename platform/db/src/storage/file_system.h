// What the engine asks of the operating system, as an interface, so that tests can fail a call, cut a
// file short, fill a disk and count reads. Everything the engine reads and writes comes through here.
#pragma once

#include "base/status.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvane {

enum class FileKind { Missing, File, Directory, Other };

// What a path names at one moment. Two states of a table file that are equal mean that nothing
// happened to it in between, as far as the clock of its disk can tell.
struct FileState {
    FileKind kind = FileKind::Missing;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t birth_time = 0;        // nanoseconds since 1970; 0 where the disk doesn't tell
    std::int64_t size = 0;              // bytes
    std::int64_t modification_time = 0; // nanoseconds since 1970

    bool operator==(const FileState &) const = default;
    // The system gives the number of a file that is gone to a new one; their births tell them apart.
    bool same_file(const FileState &other) const
    {
        return kind == other.kind && device == other.device && inode == other.inode &&
               birth_time == other.birth_time;
    }
};

enum class LockKind { Shared, Exclusive };

// Bytes of a file that a lock is about, whether the file has them or not.
struct LockRange {
    std::int64_t first = 0;
    std::int64_t count = 0;
};

// Bytes of a file that are wanted.
struct FilePiece {
    std::int64_t offset = 0;
    std::span<char> buffer = {};
    std::size_t got = 0; // how many of them there were
};

// An open file. Closed by its destructor.
class RandomAccessFile
{
public:
    virtual ~RandomAccessFile() = default;

    // Reads from `offset` until the buffer is full or the file ends, and answers the number of bytes
    // read. Interrupted and short reads are repeated.
    virtual Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) = 0;
    // Reads bytes that lie here and there, which may cost less than one after the other.
    virtual Status read_scattered(std::span<FilePiece> pieces);
    virtual Result<FileState> state() = 0;

    // Told of a piece of the file, which is the caller's until it returns.
    using TakePiece = std::function<Status(std::int64_t offset, std::span<const char> piece)>;
    // Reads `size` bytes from `offset` on piece by piece into the buffer, each of them whole, and answers the
    // number of bytes in those that were taken: less where the file ends before. A failure of who takes a
    // piece ends it.
    virtual Result<std::int64_t> read_pieces(std::int64_t offset, std::int64_t size, std::span<char> buffer,
                                             const TakePiece &take);

    // Locks bytes for this open file against other open files, of other programs and of this one, that ask
    // for locks too. False when another one holds a lock that forbids it. Locks end with the open file.
    virtual Result<bool> try_lock(LockKind kind, LockRange range) = 0;
    virtual Status unlock(LockRange range) = 0;
};

// Reads pieces as RandomAccessFile::read_pieces says, each with a call of `read_at`.
template <typename ReadAt>
Result<std::int64_t> pieces_read_by(ReadAt read_at, std::int64_t offset, std::int64_t size,
                                    std::span<char> buffer, const RandomAccessFile::TakePiece &take)
{
    std::int64_t done = 0;
    while (done < size) {
        const auto wanted = static_cast<std::size_t>(
            std::min<std::int64_t>(size - done, static_cast<std::int64_t>(buffer.size())));
        const std::span<char> piece = buffer.first(wanted);
        const Result<std::size_t> got = read_at(offset + done, piece);
        if (!got.ok())
            return got.status();
        if (*got < wanted)
            return done;
        if (Status taken = take(offset + done, piece); !taken.ok())
            return taken;
        done += static_cast<std::int64_t>(wanted);
    }
    return done;
}

// An open file that can be changed.
class WritableFile : public RandomAccessFile
{
public:
    // Writes once, and answers how many bytes were written: perhaps not all, never none.
    virtual Result<std::size_t> write_at(std::int64_t offset, std::span<const char> bytes) = 0;
    virtual Status truncate(std::int64_t size) = 0;
    // Returns when what was written is on the disk.
    virtual Status sync() = 0;
    // Sets the modification time, in nanoseconds since 1970. Disks may keep it less precisely.
    virtual Status set_modification_time(std::int64_t time) = 0;
    // Lets the same users as another path do the same with the file.
    virtual Status take_permissions(const std::string &of) = 0;
};

enum class Creation {
    Never, // the file has to be there
    IfMissing,
    New, // the file must not be there
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;

    // What the path names, symbolic links followed. A path that names nothing is no failure: its
    // kind is Missing.
    virtual Result<FileState> state(const std::string &path) = 0;
    virtual Result<std::unique_ptr<RandomAccessFile>> open(const std::string &path) = 0;
    virtual Result<std::unique_ptr<WritableFile>> open_to_write(const std::string &path,
                                                                Creation creation) = 0;
    // Gives a file another name, in the place of the file that has it, at once.
    virtual Status rename(const std::string &from, const std::string &to) = 0;
    virtual Status remove(const std::string &path) = 0;
    // Returns when the folder's list of names is on the disk.
    virtual Status sync_folder(const std::string &folder) = 0;
    // The path without symbolic links.
    virtual Result<std::string> real_path(const std::string &path) = 0;
    // Whether the system would let this process write the file, or make files in the folder.
    virtual bool is_writable(const std::string &path) = 0;
    // The names in a folder, "." and ".." left out, in byte order.
    virtual Result<std::vector<std::string>> list(const std::string &folder) = 0;
};

// The file system that databases opened from now on use: the system's, unless a test put another in.
FileSystem &current_file_system();

// Puts another file system in for as long as it lives. Databases opened meanwhile keep it, so they
// have to be closed before it goes.
class ScopedFileSystem
{
public:
    explicit ScopedFileSystem(FileSystem &replacement);
    ~ScopedFileSystem();
    ScopedFileSystem(const ScopedFileSystem &) = delete;
    ScopedFileSystem &operator=(const ScopedFileSystem &) = delete;

private:
    FileSystem *previous_;
};

// Reads a whole file of at most `limit` bytes; a larger one, or one that is no regular file, is refused.
// `shown` names the file in messages.
Result<std::string> read_whole_file(FileSystem &files, const std::string &path, const std::string &shown,
                                    std::int64_t limit);

// Writes all of the bytes. A failure may leave some of them written.
Status write_all(WritableFile &file, std::int64_t offset, std::span<const char> bytes);

// The failure for a system error number: its code, and "SHOWN: cannot DO: reason".
Status system_failure(int error, const std::string &shown, const char *what);

} // namespace orvane
