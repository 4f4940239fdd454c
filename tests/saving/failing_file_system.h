// A file system on which writes and renames fail, or take long, where a test says so.
#pragma once

#include "storage/posix_file_system.h"

#include <chrono>
#include <memory>
#include <thread>

class FailingFileSystem : public orvane::PosixFileSystem
{
public:
    int failing_write = -1; // which one fails, counted from 0
    int failing_rename = -1;
    int error = 28;                     // ENOSPC
    std::chrono::milliseconds delay{0}; // of each write
    int writes = 0;
    int renames = 0;

    orvane::Result<std::unique_ptr<orvane::WritableFile>> open_to_write(const std::string &path,
                                                                        orvane::Creation creation) override
    {
        auto file = PosixFileSystem::open_to_write(path, creation);
        if (!file.ok())
            return file;
        return std::unique_ptr<orvane::WritableFile>(std::make_unique<File>(*this, path, std::move(*file)));
    }
    orvane::Status rename(const std::string &from, const std::string &to) override
    {
        if (renames++ == failing_rename)
            return orvane::system_failure(error, from, "rename");
        return PosixFileSystem::rename(from, to);
    }

private:
    class File : public orvane::WritableFile
    {
    public:
        File(FailingFileSystem &files, std::string path, std::unique_ptr<orvane::WritableFile> file)
            : files_(files), path_(std::move(path)), file_(std::move(file))
        {
        }
        orvane::Result<std::size_t> read_at(int64_t offset, std::span<char> buffer) override
        {
            return file_->read_at(offset, buffer);
        }
        orvane::Result<orvane::FileState> state() override { return file_->state(); }
        orvane::Result<bool> try_lock(orvane::LockKind kind, orvane::LockRange range) override
        {
            return file_->try_lock(kind, range);
        }
        orvane::Status unlock(orvane::LockRange range) override { return file_->unlock(range); }
        // Half of the bytes at most, as a disk that fills up takes them.
        orvane::Result<std::size_t> write_at(int64_t offset, std::span<const char> bytes) override
        {
            std::this_thread::sleep_for(files_.delay);
            if (files_.writes++ == files_.failing_write)
                return orvane::system_failure(files_.error, path_, "write");
            return file_->write_at(offset, bytes.first((bytes.size() + 1) / 2));
        }
        orvane::Status truncate(int64_t size) override { return file_->truncate(size); }
        orvane::Status sync() override { return file_->sync(); }
        orvane::Status set_modification_time(int64_t time) override
        {
            return file_->set_modification_time(time);
        }
        orvane::Status take_permissions(const std::string &of) override
        {
            return file_->take_permissions(of);
        }

    private:
        FailingFileSystem &files_;
        std::string path_;
        std::unique_ptr<orvane::WritableFile> file_;
    };
};
