// The file system of the machine.
#pragma once

#include "storage/file_system.h"

namespace orvane {

class PosixFileSystem : public FileSystem
{
public:
    Result<FileState> state(const std::string &path) override;
    Result<std::unique_ptr<RandomAccessFile>> open(const std::string &path) override;
    Result<std::unique_ptr<WritableFile>> open_to_write(const std::string &path, Creation creation) override;
    Status rename(const std::string &from, const std::string &to) override;
    Status remove(const std::string &path) override;
    Status sync_folder(const std::string &folder) override;
    Result<std::string> real_path(const std::string &path) override;
    bool is_writable(const std::string &path) override;
    Result<std::vector<std::string>> list(const std::string &folder) override;
};

} // namespace orvane
