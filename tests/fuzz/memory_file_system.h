// Files in memory: a folder "/data" and nothing else, whose clock moves by one with each change. The fuzzers'
// databases lie there, so that a run touches no disk and happens the same way whenever it is repeated.
#pragma once

#include "storage/file_system.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::fuzz {

class MemoryFileSystem : public FileSystem
{
public:
    static constexpr const char *folder = "/data";

    // Puts a new file in the place of the one of that path, if there is one.
    void write(const std::string &path, std::string_view bytes);
    // Changes a file in place, as another program does. The file has to be there.
    void change(const std::string &path, std::string_view bytes);
    // The bytes of a file; empty where there is none.
    std::string read(const std::string &path) const;
    bool has(const std::string &path) const { return files_.count(path) > 0; }

    Result<FileState> state(const std::string &path) override;
    Result<std::unique_ptr<RandomAccessFile>> open(const std::string &path) override;
    Result<std::unique_ptr<WritableFile>> open_to_write(const std::string &path, Creation creation) override;
    Status rename(const std::string &from, const std::string &to) override;
    Status remove(const std::string &path) override;
    Status sync_folder(const std::string &) override { return Status(); }
    Result<std::string> real_path(const std::string &path) override { return path; }
    bool is_writable(const std::string &path) override { return path == folder || has(path); }
    Result<std::vector<std::string>> list(const std::string &folder_path) override;

private:
    struct Content {
        std::string bytes;
        std::uint64_t number;
        std::int64_t birth_time;
        std::int64_t modification_time;
    };
    class OpenFile;

    FileState state_of(const Content &content) const;
    std::shared_ptr<Content> make(const std::string &path);

    std::map<std::string, std::shared_ptr<Content>> files_;
    std::uint64_t last_number_ = 0;
    // Long ago, so that no file counts as one that changed a moment ago.
    std::int64_t now_ = 1'000'000'000'000'000'000;
};

} // namespace orvane::fuzz
