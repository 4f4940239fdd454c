// Blocks of table files in memory, within one budget for all of them. Blocks are read, never mapped, so
// that a file which another program cuts short costs an error and not the process.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

namespace orvane {

// A run of whole records as they stood in the file when it was read.
struct Block {
    std::vector<char> bytes;
    // Every record ends with its only line feed, so that readers need not look for stray ones.
    bool well_formed = false;
};

// One state of one file. A file that changed gets a new version, under which nothing is cached yet.
using FileVersion = std::uint64_t;

// Keeps the most recently used blocks. A block that is handed out lives as long as someone holds it,
// also when it has left the cache.
class BlockCache
{
public:
    explicit BlockCache(std::size_t budget_bytes) : budget_(budget_bytes) {}
    BlockCache(const BlockCache &) = delete;
    BlockCache &operator=(const BlockCache &) = delete;

    // A version that no file has had yet.
    FileVersion new_version() { return ++last_version_; }

    // The block, or null when it isn't kept.
    std::shared_ptr<const Block> find(FileVersion version, std::int64_t number);
    // Keeps a block, and lets go of the least recently used ones that the budget has no room for.
    void keep(FileVersion version, std::int64_t number, std::shared_ptr<const Block> block);
    // Lets go of all blocks of a version.
    void drop(FileVersion version);
    // Lets go of one block.
    void drop(FileVersion version, std::int64_t number);

    std::size_t used_bytes() const { return used_; }
    std::size_t budget_bytes() const { return budget_; }

private:
    struct Key {
        FileVersion version;
        std::int64_t number;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const noexcept
        {
            return static_cast<std::size_t>((key.version * 0x9e3779b97f4a7c15u) ^
                                            (static_cast<std::uint64_t>(key.number) * 0xc2b2ae3d27d4eb4fu));
        }
    };
    struct Entry {
        Key key;
        std::shared_ptr<const Block> block;
    };
    using Entries = std::list<Entry>;

    void erase(Entries::iterator entry);

    std::size_t budget_;
    std::size_t used_ = 0;
    FileVersion last_version_ = 0;
    Entries entries_; // most recently used first
    std::unordered_map<Key, Entries::iterator, KeyHash> index_;
};

} // namespace orvane
