// What the engine asks of the operating system, as an interface, so that tests can fail a call, cut a
// file short and count reads. Everything the engine reads comes through here.
#pragma once

#include "base/status.h"

#include <cstdint>
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
    std::int64_t size = 0;              // bytes
    std::int64_t modification_time = 0; // nanoseconds since 1970

    bool operator==(const FileState &) const = default;
    bool same_file(const FileState &other) const
    {
        return kind == other.kind && device == other.device && inode == other.inode;
    }
};

// An open file. Closed by its destructor.
class RandomAccessFile
{
public:
    virtual ~RandomAccessFile() = default;

    // Reads from `offset` until the buffer is full or the file ends, and answers the number of bytes
    // read. Interrupted and short reads are repeated.
    virtual Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) = 0;
    virtual Result<FileState> state() = 0;
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;

    // What the path names, symbolic links followed. A path that names nothing is no failure: its
    // kind is Missing.
    virtual Result<FileState> state(const std::string &path) = 0;
    virtual Result<std::unique_ptr<RandomAccessFile>> open(const std::string &path) = 0;
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

// The failure for a system error number: its code, and "SHOWN: cannot DO: reason".
Status system_failure(int error, const std::string &shown, const char *what);

} // namespace orvane
