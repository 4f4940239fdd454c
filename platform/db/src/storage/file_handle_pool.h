// Open files, no more of them at a time than a bound: a process may have many databases open, and the
// system lets it have only so many files.
#pragma once

#include "storage/file_system.h"

#include <cstdint>
#include <list>
#include <unordered_map>

namespace orvane {

class FileHandlePool
{
public:
    explicit FileHandlePool(std::size_t capacity) : capacity_(capacity) {}
    FileHandlePool(const FileHandlePool &) = delete;
    FileHandlePool &operator=(const FileHandlePool &) = delete;

    using Owner = std::uint64_t;
    Owner new_owner() { return ++last_owner_; }

    // The owner's open file, or null. Belongs to the pool and lives until the next call of `keep` or `close`.
    RandomAccessFile *find(Owner owner);
    // Takes an open file over, closing the least recently used one when there are too many.
    RandomAccessFile *keep(Owner owner, std::unique_ptr<RandomAccessFile> file);
    void close(Owner owner);

    std::size_t open_count() const { return entries_.size(); }

private:
    struct Entry {
        Owner owner;
        std::unique_ptr<RandomAccessFile> file;
    };
    using Entries = std::list<Entry>;

    std::size_t capacity_;
    Owner last_owner_ = 0;
    Entries entries_; // most recently used first
    std::unordered_map<Owner, Entries::iterator> index_;
};

} // namespace orvane
