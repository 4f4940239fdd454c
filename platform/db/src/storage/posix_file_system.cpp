#include "storage/posix_file_system.h"

#include "base/concat.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane {

namespace {

FileState state_of(const struct stat &info)
{
    FileState state;
    state.kind = S_ISREG(info.st_mode)   ? FileKind::File
                 : S_ISDIR(info.st_mode) ? FileKind::Directory
                                         : FileKind::Other;
    state.device = info.st_dev;
    state.inode = info.st_ino;
    state.size = info.st_size;
    state.modification_time =
        static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec;
    return state;
}

class PosixFile : public RandomAccessFile
{
public:
    PosixFile(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}
    ~PosixFile() override { ::close(descriptor_); }
    PosixFile(const PosixFile &) = delete;
    PosixFile &operator=(const PosixFile &) = delete;

    Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) override
    {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t got = ::pread(descriptor_, buffer.data() + done, buffer.size() - done,
                                        static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
            if (got > 0)
                done += static_cast<std::size_t>(got);
            else if (got == 0)
                break;
            else if (errno != EINTR)
                return system_failure(errno, path_, "read");
        }
        return done;
    }

    Result<FileState> state() override
    {
        struct stat info;
        if (::fstat(descriptor_, &info) != 0)
            return system_failure(errno, path_, "look at");
        return state_of(info);
    }

private:
    int descriptor_;
    std::string path_;
};

} // namespace

Result<FileState> PosixFileSystem::state(const std::string &path)
{
    struct stat info;
    if (::stat(path.c_str(), &info) == 0)
        return state_of(info);
    if (errno == ENOENT || errno == ENOTDIR)
        return FileState{};
    return system_failure(errno, path, "look at");
}

Result<std::unique_ptr<RandomAccessFile>> PosixFileSystem::open(const std::string &path)
{
    // Without O_NONBLOCK a pipe put in the file's place since it was looked at would hold us for ever.
    int descriptor;
    do
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return system_failure(errno, path, "open");
    return std::unique_ptr<RandomAccessFile>(std::make_unique<PosixFile>(descriptor, path));
}

bool PosixFileSystem::is_writable(const std::string &path)
{
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

Result<std::vector<std::string>> PosixFileSystem::list(const std::string &folder)
{
    DIR *stream = ::opendir(folder.c_str());
    if (!stream)
        return system_failure(errno, folder, "list");
    std::vector<std::string> names;
    errno = 0;
    while (const dirent *entry = ::readdir(stream)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    const int error = errno;
    ::closedir(stream);
    if (error != 0)
        return system_failure(error, folder, "list");
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace orvane
