#include "storage/file_handle_pool.h"

namespace orvane {

RandomAccessFile *FileHandlePool::find(Owner owner)
{
    const auto found = index_.find(owner);
    if (found == index_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->file.get();
}

RandomAccessFile *FileHandlePool::keep(Owner owner, std::unique_ptr<RandomAccessFile> file)
{
    close(owner);
    entries_.push_front(Entry{owner, std::move(file)});
    index_.emplace(owner, entries_.begin());
    while (entries_.size() > capacity_ && entries_.size() > 1) {
        index_.erase(entries_.back().owner);
        entries_.pop_back();
    }
    return entries_.front().file.get();
}

void FileHandlePool::close(Owner owner)
{
    const auto found = index_.find(owner);
    if (found == index_.end())
        return;
    entries_.erase(found->second);
    index_.erase(found);
}

} // namespace orvane
