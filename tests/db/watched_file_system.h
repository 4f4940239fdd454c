// A file system that counts what is asked of it and fails where a test says so.
#pragma once

#include "base/status.h"
#include "storage/posix_file_system.h"

#include <cerrno>
#include <functional>
#include <map>
#include <string>
#include <utility>

class WatchedFileSystem : public orvane::FileSystem
{
public:
    // Paths that fail, with the error number. Matched by the path's end.
    std::map<std::string, int> failing_states;
    std::map<std::string, int> failing_opens;
    std::map<std::string, int> failing_reads;
    bool writable = true;
    // Called before a file is read, with its path.
    std::function<void(const std::string &)> before_read;
    std::function<void(const std::string &)> before_open;

    int states(const std::string &ending) const { return count(states_, ending); }
    int opens(const std::string &ending) const { return count(opens_, ending); }
    int reads(const std::string &ending) const { return count(reads_, ending); }
    int64_t bytes_read(const std::string &ending) const { return count(bytes_, ending); }
    int all_states() const { return count(states_, ""); }
    void forget()
    {
        states_.clear();
        opens_.clear();
        reads_.clear();
        bytes_.clear();
    }

    orvane::Result<orvane::FileState> state(const std::string &path) override
    {
        ++states_[path];
        if (const int error = failing(failing_states, path))
            return orvane::system_failure(error, path, "look at");
        return system_.state(path);
    }

    orvane::Result<std::unique_ptr<orvane::RandomAccessFile>> open(const std::string &path) override
    {
        ++opens_[path];
        if (before_open)
            before_open(path);
        if (const int error = failing(failing_opens, path))
            return orvane::system_failure(error, path, "open");
        auto file = system_.open(path);
        if (!file.ok())
            return file.status();
        return std::unique_ptr<orvane::RandomAccessFile>(
            std::make_unique<WatchedFile>(*this, path, std::move(*file)));
    }

    orvane::Result<std::unique_ptr<orvane::WritableFile>> open_to_write(const std::string &path,
                                                                        orvane::Creation creation) override
    {
        return system_.open_to_write(path, creation);
    }
    orvane::Status rename(const std::string &from, const std::string &to) override
    {
        return system_.rename(from, to);
    }
    orvane::Status remove(const std::string &path) override { return system_.remove(path); }
    orvane::Status sync_folder(const std::string &folder) override { return system_.sync_folder(folder); }
    orvane::Result<std::string> real_path(const std::string &path) override
    {
        return system_.real_path(path);
    }

    bool is_writable(const std::string &path) override { return writable && system_.is_writable(path); }

    orvane::Result<std::vector<std::string>> list(const std::string &folder) override
    {
        return system_.list(folder);
    }

private:
    class WatchedFile : public orvane::RandomAccessFile
    {
    public:
        WatchedFile(WatchedFileSystem &files, std::string path,
                    std::unique_ptr<orvane::RandomAccessFile> file)
            : files_(files), path_(std::move(path)), file_(std::move(file))
        {
        }
        orvane::Result<std::size_t> read_at(int64_t offset, std::span<char> buffer) override
        {
            ++files_.reads_[path_];
            if (files_.before_read)
                files_.before_read(path_);
            if (const int error = failing(files_.failing_reads, path_))
                return orvane::system_failure(error, path_, "read");
            auto got = file_->read_at(offset, buffer);
            if (got.ok())
                files_.bytes_[path_] += static_cast<int>(*got);
            return got;
        }
        orvane::Result<orvane::FileState> state() override { return file_->state(); }
        orvane::Result<bool> try_lock(orvane::LockKind kind, orvane::LockRange range) override
        {
            return file_->try_lock(kind, range);
        }
        orvane::Status unlock(orvane::LockRange range) override { return file_->unlock(range); }

    private:
        WatchedFileSystem &files_;
        std::string path_;
        std::unique_ptr<orvane::RandomAccessFile> file_;
    };

    static int failing(const std::map<std::string, int> &paths, const std::string &path)
    {
        for (const auto &[ending, error] : paths)
            if (path.ends_with(ending))
                return error;
        return 0;
    }
    static int count(const std::map<std::string, int> &counts, const std::string &ending)
    {
        int sum = 0;
        for (const auto &[path, number] : counts)
            if (path.ends_with(ending))
                sum += number;
        return sum;
    }

    orvane::PosixFileSystem system_;
    std::map<std::string, int> states_, opens_, reads_, bytes_;
};
