#include "new_file.h"

#include "failure.h"
#include "long_work.h"
#include "output.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ovdb {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail_as_there_already(const std::string &path)
{
    throw Failure(ExitCode::Failed,
                  path + ": there is a file already; it was left as it is (--force replaces it)");
}

} // namespace

NewFile::NewFile(const std::string &path, bool replace)
    : path_(path), replace_(replace), stream_(nullptr, &std::fclose)
{
    std::error_code ignored;
    if (const fs::path target = fs::canonical(path, ignored); !target.empty())
        path_ = target;
    struct stat there {
    };
    const bool is_there = stat(path_.c_str(), &there) == 0;
    if (is_there && S_ISDIR(there.st_mode))
        fail(EISDIR);
    if (is_there && !S_ISREG(there.st_mode)) {
        written_ = path_;
        return;
    }
    if (is_there && !replace)
        fail_as_there_already(path_);
    if (is_there && access(path_.c_str(), W_OK) != 0)
        fail(errno);
    end_on_termination();
    const fs::path target(path_);
    std::string folder = (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
    if (!mkdtemp(folder.data()))
        fail(errno);
    folder_ = folder;
    written_ = folder_ + "/" + target.filename().string();
}

NewFile::~NewFile()
{
    stream_.reset();
    if (descriptor_ >= 0)
        ::close(descriptor_);
    std::error_code ignored;
    if (!folder_.empty())
        fs::remove_all(folder_, ignored);
}

void NewFile::fail(int error) const
{
    throw Failure(ExitCode::Failed, path_ + ": cannot be written: " + std::strerror(error));
}

std::FILE *NewFile::open()
{
    descriptor_ = ::open(written_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        fail(errno);
    stream_.reset(interruptible_stream(descriptor_));
    return stream_.get();
}

void NewFile::close()
{
    if (stream_ && std::fclose(stream_.release()) != 0)
        fail(errno);
    if (descriptor_ >= 0 && ::close(std::exchange(descriptor_, -1)) != 0)
        fail(errno);
}

void NewFile::put_in_place()
{
    close();
    if (!folder_.empty())
        put_beside();
}

void NewFile::put_beside()
{
    struct stat replaced {
    };
    // The users of a file that is replaced keep their rights.
    if (replace_ && stat(path_.c_str(), &replaced) == 0 &&
        chmod(written_.c_str(), replaced.st_mode & 07777) != 0)
        fail(errno);
    const int file = ::open(written_.c_str(), O_RDONLY | O_CLOEXEC);
    const bool is_stored = file >= 0 && fsync(file) == 0;
    const int error = errno;
    if (file >= 0)
        ::close(file);
    if (!is_stored)
        fail(error);
    stop_if_interrupted();
    const unsigned how = replace_ ? 0 : RENAME_NOREPLACE;
    int done = renameat2(AT_FDCWD, written_.c_str(), AT_FDCWD, path_.c_str(), how);
    // A file system that can't tell the two apart.
    if (done != 0 && (errno == EINVAL || errno == ENOSYS) && access(path_.c_str(), F_OK) != 0)
        done = std::rename(written_.c_str(), path_.c_str());
    if (done != 0 && errno == EEXIST)
        fail_as_there_already(path_);
    if (done != 0)
        fail(errno);
}

} // namespace ovdb
