#include "memory_file_system.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orvane::fuzz {

// Nobody else has the file: every lock is given.
class MemoryFileSystem::OpenFile : public WritableFile
{
public:
    OpenFile(MemoryFileSystem &files, std::shared_ptr<Content> content)
        : files_(files), content_(std::move(content))
    {
    }

    Result<std::size_t> read_at(std::int64_t offset, std::span<char> buffer) override
    {
        const std::string &bytes = content_->bytes;
        const auto start = std::min(bytes.size(), static_cast<std::size_t>(offset));
        const std::size_t count = std::min(buffer.size(), bytes.size() - start);
        if (count > 0)
            std::memcpy(buffer.data(), bytes.data() + start, count);
        return count;
    }
    Result<FileState> state() override { return files_.state_of(*content_); }
    Result<bool> try_lock(LockKind, LockRange) override { return true; }
    Status unlock(LockRange) override { return Status(); }

    Result<std::size_t> write_at(std::int64_t offset, std::span<const char> bytes) override
    {
        const auto start = static_cast<std::size_t>(offset);
        if (content_->bytes.size() < start + bytes.size())
            content_->bytes.resize(start + bytes.size());
        std::copy(bytes.begin(), bytes.end(), content_->bytes.begin() + offset);
        content_->modification_time = ++files_.now_;
        return bytes.size();
    }
    Status truncate(std::int64_t size) override
    {
        content_->bytes.resize(static_cast<std::size_t>(size));
        content_->modification_time = ++files_.now_;
        return Status();
    }
    Status sync() override { return Status(); }
    Status set_modification_time(std::int64_t time) override
    {
        content_->modification_time = time;
        return Status();
    }
    Status take_permissions(const std::string &) override { return Status(); }

private:
    MemoryFileSystem &files_;
    const std::shared_ptr<Content> content_;
};

FileState MemoryFileSystem::state_of(const Content &content) const
{
    FileState state;
    state.kind = FileKind::File;
    state.device = 1;
    state.inode = content.number;
    state.birth_time = content.birth_time;
    state.size = static_cast<std::int64_t>(content.bytes.size());
    state.modification_time = content.modification_time;
    return state;
}

std::shared_ptr<MemoryFileSystem::Content> MemoryFileSystem::make(const std::string &path)
{
    ++now_;
    auto content = std::make_shared<Content>(Content{{}, ++last_number_, now_, now_});
    files_[path] = content;
    return content;
}

void MemoryFileSystem::write(const std::string &path, std::string_view bytes)
{
    make(path)->bytes = bytes;
}

void MemoryFileSystem::change(const std::string &path, std::string_view bytes)
{
    Content &content = *files_.at(path);
    content.bytes = bytes;
    content.modification_time = ++now_;
}

std::string MemoryFileSystem::read(const std::string &path) const
{
    const auto found = files_.find(path);
    return found == files_.end() ? std::string() : found->second->bytes;
}

Result<FileState> MemoryFileSystem::state(const std::string &path)
{
    if (path == folder) {
        FileState state;
        state.kind = FileKind::Directory;
        return state;
    }
    const auto found = files_.find(path);
    return found == files_.end() ? FileState{} : state_of(*found->second);
}

Result<std::unique_ptr<RandomAccessFile>> MemoryFileSystem::open(const std::string &path)
{
    const auto found = files_.find(path);
    if (found == files_.end())
        return system_failure(path == folder ? EISDIR : ENOENT, path, "open");
    return std::unique_ptr<RandomAccessFile>(std::make_unique<OpenFile>(*this, found->second));
}

Result<std::unique_ptr<WritableFile>> MemoryFileSystem::open_to_write(const std::string &path,
                                                                      Creation creation)
{
    const auto found = files_.find(path);
    const bool is_there = found != files_.end();
    if (is_there ? creation == Creation::New : creation == Creation::Never)
        return system_failure(is_there ? EEXIST : ENOENT, path, "open");
    if (!is_there && path.substr(0, path.rfind('/')) != folder)
        return system_failure(ENOENT, path, "make");
    return std::unique_ptr<WritableFile>(
        std::make_unique<OpenFile>(*this, is_there ? found->second : make(path)));
}

Status MemoryFileSystem::rename(const std::string &from, const std::string &to)
{
    const auto found = files_.find(from);
    if (found == files_.end())
        return system_failure(ENOENT, from, "give the table's name to");
    const auto content = found->second;
    files_.erase(found);
    files_[to] = content;
    return Status();
}

Status MemoryFileSystem::remove(const std::string &path)
{
    return files_.erase(path) > 0 ? Status() : system_failure(ENOENT, path, "remove");
}

Result<std::vector<std::string>> MemoryFileSystem::list(const std::string &folder_path)
{
    if (folder_path != folder)
        return system_failure(ENOENT, folder_path, "list");
    std::vector<std::string> names;
    for (const auto &file : files_)
        names.push_back(file.first.substr(folder_path.size() + 1));
    return names;
}

} // namespace orvane::fuzz
