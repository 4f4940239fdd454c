#include "storage/posix_file_system.h"

#include "base/concat.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace orvane {

namespace {

std::int64_t nanoseconds(const struct statx_timestamp &time)
{
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileState state_of(const struct statx &info)
{
    FileState state;
    state.kind = S_ISREG(info.stx_mode)   ? FileKind::File
                 : S_ISDIR(info.stx_mode) ? FileKind::Directory
                                          : FileKind::Other;
    state.device = makedev(info.stx_dev_major, info.stx_dev_minor);
    state.inode = info.stx_ino;
    state.birth_time = (info.stx_mask & STATX_BTIME) != 0 ? nanoseconds(info.stx_btime) : 0;
    state.size = static_cast<std::int64_t>(info.stx_size);
    state.modification_time = nanoseconds(info.stx_mtime);
    return state;
}

// Calls again what a signal interrupted.
template <typename Call>
auto uninterrupted(Call call)
{
    auto answer = call();
    while (answer < 0 && errno == EINTR)
        answer = call();
    return answer;
}

class PosixFile : public WritableFile
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
            const ssize_t got = uninterrupted([&] {
                return ::pread(descriptor_, buffer.data() + done, buffer.size() - done,
                               static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
            });
            if (got < 0)
                return system_failure(errno, path_, "read");
            if (got == 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

    Result<FileState> state() override
    {
        struct statx info;
        if (::statx(descriptor_, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0)
            return system_failure(errno, path_, "look at");
        return state_of(info);
    }

    Result<bool> try_lock(LockKind kind, LockRange range) override
    {
        struct flock lock = lock_of(range);
        lock.l_type = kind == LockKind::Shared ? F_RDLCK : F_WRLCK;
        if (uninterrupted([&] { return ::fcntl(descriptor_, F_OFD_SETLK, &lock); }) == 0)
            return true;
        if (errno == EAGAIN || errno == EACCES)
            return false;
        return system_failure(errno, path_, "lock");
    }

    Status unlock(LockRange range) override
    {
        struct flock lock = lock_of(range);
        lock.l_type = F_UNLCK;
        if (uninterrupted([&] { return ::fcntl(descriptor_, F_OFD_SETLK, &lock); }) == 0)
            return Status();
        return system_failure(errno, path_, "unlock");
    }

    Result<std::size_t> write_at(std::int64_t offset, std::span<const char> bytes) override
    {
        const ssize_t written = uninterrupted(
            [&] { return ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        if (written > 0)
            return static_cast<std::size_t>(written);
        return system_failure(written < 0 ? errno : ENOSPC, path_, "write");
    }

    Status truncate(std::int64_t size) override
    {
        return done("cut short", uninterrupted([&] { return ::ftruncate(descriptor_, size); }));
    }

    Status sync() override
    {
        return done("write to the disk", uninterrupted([&] { return ::fdatasync(descriptor_); }));
    }

    Status set_modification_time(std::int64_t time) override
    {
        const struct timespec times[2] = {{0, UTIME_OMIT}, {time / 1'000'000'000, time % 1'000'000'000}};
        return done("set the time of", ::futimens(descriptor_, times));
    }

    Status take_permissions(const std::string &of) override
    {
        struct stat info;
        if (::stat(of.c_str(), &info) != 0)
            return system_failure(errno, of, "look at");
        // Only the administrator can give a file away; a member of the group can give it to that. Who is
        // neither leaves a file of his own, with the same permissions.
        if (::fchown(descriptor_, info.st_uid, info.st_gid) != 0)
            static_cast<void>(::fchown(descriptor_, static_cast<uid_t>(-1), info.st_gid) == 0);
        return done("set the permissions of", ::fchmod(descriptor_, info.st_mode & 07777));
    }

private:
    static struct flock lock_of(LockRange range)
    {
        struct flock lock = {};
        lock.l_whence = SEEK_SET;
        lock.l_start = static_cast<off_t>(range.first);
        lock.l_len = static_cast<off_t>(range.count);
        return lock;
    }
    Status done(const char *what, int answer) const
    {
        return answer == 0 ? Status() : system_failure(errno, path_, what);
    }

    int descriptor_;
    std::string path_;
};

// Without O_NONBLOCK a pipe put in the file's place since it was looked at would hold us for ever.
Result<std::unique_ptr<PosixFile>> open_posix(const std::string &path, int flags)
{
    const int descriptor =
        uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666); });
    if (descriptor < 0)
        return system_failure(errno, path, (flags & O_CREAT) != 0 ? "make" : "open");
    return std::make_unique<PosixFile>(descriptor, path);
}

} // namespace

Result<FileState> PosixFileSystem::state(const std::string &path)
{
    struct statx info;
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &info) == 0)
        return state_of(info);
    if (errno == ENOENT || errno == ENOTDIR)
        return FileState{};
    return system_failure(errno, path, "look at");
}

Result<std::unique_ptr<RandomAccessFile>> PosixFileSystem::open(const std::string &path)
{
    auto file = open_posix(path, O_RDONLY);
    if (!file.ok())
        return file.status();
    return std::unique_ptr<RandomAccessFile>(std::move(*file));
}

Result<std::unique_ptr<WritableFile>> PosixFileSystem::open_to_write(const std::string &path,
                                                                     Creation creation)
{
    const int flags = creation == Creation::New         ? O_CREAT | O_EXCL
                      : creation == Creation::IfMissing ? O_CREAT
                                                        : 0;
    auto file = open_posix(path, O_RDWR | flags);
    if (!file.ok())
        return file.status();
    return std::unique_ptr<WritableFile>(std::move(*file));
}

Status PosixFileSystem::rename(const std::string &from, const std::string &to)
{
    return ::rename(from.c_str(), to.c_str()) == 0 ? Status()
                                                   : system_failure(errno, from, "give the table's name to");
}

Status PosixFileSystem::remove(const std::string &path)
{
    return ::unlink(path.c_str()) == 0 ? Status() : system_failure(errno, path, "remove");
}

Status PosixFileSystem::sync_folder(const std::string &folder)
{
    const int descriptor =
        uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0)
        return system_failure(errno, folder, "open");
    const int answer = uninterrupted([&] { return ::fsync(descriptor); });
    const int error = errno;
    ::close(descriptor);
    return answer == 0 ? Status() : system_failure(error, folder, "write to the disk");
}

Result<std::string> PosixFileSystem::real_path(const std::string &path)
{
    const std::unique_ptr<char, void (*)(void *)> real(::realpath(path.c_str(), nullptr), std::free);
    if (!real)
        return system_failure(errno, path, "look at");
    return std::string(real.get());
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
