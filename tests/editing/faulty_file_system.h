// A file system that fails in the n-th call that is made of it: once, as a disk does; or for good, as if the
// program were killed in that call, which then is done in part.
#pragma once

#include "storage/posix_file_system.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class FaultyFileSystem : public orvane::FileSystem
{
public:
    enum class Fault {
        Error, // the call fails with `error`
        Short, // a write writes half, the next one fails with `error`, and so do all that would make a file
               // longer; other calls go well
        KilledHere, // nothing of the call is done, and nothing is possible any more
        KilledIn,   // a write is done as far as a page, anything else whole; nothing is possible any more
    };

    // Counts from 1; 0: none.
    void fail_at(int call, Fault fault, int error = EIO)
    {
        calls_ = 0;
        at_ = call;
        fault_ = fault;
        error_ = error;
        dead_ = disk_full_ = next_fails_ = struck_ = false;
    }
    int calls() const { return calls_; }
    bool struck() const { return struck_; } // whether the call to fail in was reached
    // What was called when it struck.
    const std::string &where() const { return where_; }

    orvane::Result<orvane::FileState> state(const std::string &path) override
    {
        return around<orvane::FileState>("state", path, [&] { return system_.state(path); });
    }
    orvane::Result<std::unique_ptr<orvane::RandomAccessFile>> open(const std::string &path) override
    {
        auto file = around<std::unique_ptr<orvane::RandomAccessFile>>("open", path,
                                                                      [&] { return system_.open(path); });
        if (!file.ok())
            return file.status();
        return std::unique_ptr<orvane::RandomAccessFile>(
            std::make_unique<ReadFile>(*this, path, std::move(*file)));
    }
    orvane::Result<std::unique_ptr<orvane::WritableFile>> open_to_write(const std::string &path,
                                                                        orvane::Creation creation) override
    {
        auto file = around<std::unique_ptr<orvane::WritableFile>>(
            "open_to_write", path, [&] { return system_.open_to_write(path, creation); });
        if (!file.ok())
            return file.status();
        return std::unique_ptr<orvane::WritableFile>(
            std::make_unique<WriteFile>(*this, path, std::move(*file)));
    }
    orvane::Status rename(const std::string &from, const std::string &to) override
    {
        return around("rename", from, [&] { return system_.rename(from, to); });
    }
    orvane::Status remove(const std::string &path) override
    {
        return around("remove", path, [&] { return system_.remove(path); });
    }
    orvane::Status sync_folder(const std::string &folder) override
    {
        return around("sync_folder", folder, [&] { return system_.sync_folder(folder); });
    }
    orvane::Result<std::string> real_path(const std::string &path) override
    {
        return around<std::string>("real_path", path, [&] { return system_.real_path(path); });
    }
    bool is_writable(const std::string &path) override { return system_.is_writable(path); }
    orvane::Result<std::vector<std::string>> list(const std::string &folder) override
    {
        return system_.list(folder);
    }

private:
    static constexpr std::int64_t page = 4096;

    // Whether the call is the one to fail in.
    bool strikes(const char *what, const std::string &path)
    {
        if (++calls_ != at_)
            return false;
        struck_ = true;
        where_ = std::string(what) + " " + path.substr(path.rfind('/') + 1);
        dead_ = fault_ == Fault::KilledHere || fault_ == Fault::KilledIn;
        return true;
    }
    orvane::Status failure(const char *what, const std::string &path) const
    {
        return orvane::system_failure(error_, path, what);
    }

    template <typename T, typename Call>
    orvane::Result<T> around(const char *what, const std::string &path, Call call)
    {
        if (dead_)
            return failure(what, path);
        if (!strikes(what, path) || fault_ == Fault::Short)
            return call();
        if (fault_ == Fault::KilledIn)
            static_cast<void>(call().ok());
        return failure(what, path);
    }
    template <typename Call>
    orvane::Status around(const char *what, const std::string &path, Call call)
    {
        if (dead_)
            return failure(what, path);
        if (!strikes(what, path) || fault_ == Fault::Short)
            return call();
        if (fault_ == Fault::KilledIn)
            static_cast<void>(call().ok());
        return failure(what, path);
    }

    // What read and written files have in common.
    template <typename Base>
    class File : public Base
    {
    public:
        File(FaultyFileSystem &files, std::string path, std::unique_ptr<Base> file)
            : files_(files), path_(std::move(path)), file_(std::move(file))
        {
        }
        orvane::Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) override
        {
            return files_.around<std::size_t>("read", path_, [&] { return file_->read_at(offset, buffer); });
        }
        orvane::Result<orvane::FileState> state() override
        {
            return files_.around<orvane::FileState>("fstat", path_, [&] { return file_->state(); });
        }
        orvane::Result<bool> try_lock(orvane::LockKind kind, orvane::LockRange range) override
        {
            return files_.around<bool>("lock", path_, [&] { return file_->try_lock(kind, range); });
        }
        orvane::Status unlock(orvane::LockRange range) override
        {
            return files_.around("unlock", path_, [&] { return file_->unlock(range); });
        }

    protected:
        FaultyFileSystem &files_;
        const std::string path_;
        std::unique_ptr<Base> file_;
    };

    using ReadFile = File<orvane::RandomAccessFile>;

    class WriteFile : public File<orvane::WritableFile>
    {
    public:
        using File::File;

        orvane::Result<std::size_t> write_at(std::int64_t offset, std::span<const char> bytes) override
        {
            FaultyFileSystem &files = files_;
            if (files.dead_ || (files.disk_full_ && !fits(offset, bytes.size())))
                return files.failure("write", path_);
            if (!files.strikes("write", path_))
                return file_->write_at(offset, bytes);
            if (files.fault_ == Fault::Short) {
                files.disk_full_ = files.next_fails_ = true;
                return file_->write_at(offset, bytes.subspan(0, (bytes.size() + 1) / 2));
            }
            if (files.fault_ == Fault::KilledIn) {
                const auto to_the_page = static_cast<std::size_t>(page - offset % page);
                static_cast<void>(
                    file_->write_at(offset, bytes.subspan(0, std::min(bytes.size(), to_the_page))).ok());
            }
            return files.failure("write", path_);
        }
        // A full disk takes what lies where the file has bytes already; the write that was cut short is told
        // of by the next one.
        bool fits(std::int64_t offset, std::size_t length)
        {
            if (std::exchange(files_.next_fails_, false))
                return false;
            const auto now = file_->state();
            return now.ok() && offset + static_cast<std::int64_t>(length) <= now->size;
        }
        orvane::Status truncate(std::int64_t size) override
        {
            // A disk that is full can still let bytes go.
            return files_.around("truncate", path_, [&] { return file_->truncate(size); });
        }
        orvane::Status sync() override
        {
            return files_.around("sync", path_, [&] { return file_->sync(); });
        }
        orvane::Status set_modification_time(std::int64_t time) override
        {
            return files_.around("futimens", path_, [&] { return file_->set_modification_time(time); });
        }
        orvane::Status take_permissions(const std::string &of) override
        {
            return files_.around("permissions", path_, [&] { return file_->take_permissions(of); });
        }
    };

    orvane::PosixFileSystem system_;
    int calls_ = 0;
    int at_ = 0;
    Fault fault_ = Fault::Error;
    int error_ = EIO;
    bool dead_ = false;
    bool disk_full_ = false;
    bool next_fails_ = false;
    bool struck_ = false;
    std::string where_;
};
