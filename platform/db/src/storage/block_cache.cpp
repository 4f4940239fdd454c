#include "storage/block_cache.h"

namespace orvane {

std::shared_ptr<const Block> BlockCache::find(FileVersion version, std::int64_t number)
{
    const auto found = index_.find(Key{version, number});
    if (found == index_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->block;
}

void BlockCache::keep(FileVersion version, std::int64_t number, std::shared_ptr<const Block> block)
{
    const Key key{version, number};
    if (const auto found = index_.find(key); found != index_.end())
        erase(found->second);
    used_ += block->bytes.size();
    entries_.push_front(Entry{key, std::move(block)});
    index_.emplace(key, entries_.begin());
    // The newest stays even when it alone is beyond the budget: its reader is at work on it.
    while (used_ > budget_ && entries_.size() > 1)
        erase(std::prev(entries_.end()));
}

void BlockCache::drop(FileVersion version)
{
    for (auto entry = entries_.begin(); entry != entries_.end();) {
        const auto next = std::next(entry);
        if (entry->key.version == version)
            erase(entry);
        entry = next;
    }
}

void BlockCache::drop(FileVersion version, std::int64_t number)
{
    if (const auto found = index_.find(Key{version, number}); found != index_.end())
        erase(found->second);
}

void BlockCache::erase(Entries::iterator entry)
{
    used_ -= entry->block->bytes.size();
    index_.erase(entry->key);
    entries_.erase(entry);
}

} // namespace orvane
