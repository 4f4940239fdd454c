// Decoded columns in memory, within one budget for all tables.
#pragma once

#include "storage/block_cache.h"

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <utility>

namespace orvane {

struct Column;

// What $ORVANE_COLUMN_BUDGET says, in bytes (with an ending K, M or G in units of 1024), or a quarter of the
// memory that the process may use.
std::size_t column_budget();

// Keeps the most recently used columns of table files, each under the state of the file from which it was
// decoded. A column that is handed out lives as long as someone holds it, also when it has left the cache.
class ColumnCache
{
public:
    // What the machine has left; available_memory of work/machine_memory.h unless given.
    using Available = std::size_t (*)();

    explicit ColumnCache(std::size_t budget_bytes, Available available = nullptr);
    ColumnCache(const ColumnCache &) = delete;
    ColumnCache &operator=(const ColumnCache &) = delete;

    // The column, or null when it isn't kept.
    std::shared_ptr<const Column> find(FileVersion version, int field);
    // Keeps a column, and lets go of the least recently used ones that the budget has no room for; and of
    // more of them when the machine is short of memory. A column that is larger than the budget is not kept.
    void keep(FileVersion version, int field, std::shared_ptr<const Column> column);
    // Lets every kept column of a version follow a change of its file, by who knows the change. One that is
    // in use elsewhere goes, and one for which the answer is false.
    using Update = std::function<bool(int field, Column &column)>;
    void update(FileVersion version, const Update &update);
    // Lets go of all columns of a version.
    void drop(FileVersion version);

    // Whether so many bytes of columns more could be kept without driving the machine out of memory. Those
    // that are kept now may have to go for them.
    bool has_room_for(std::size_t bytes) const;

    std::size_t used_bytes() const { return used_; }
    std::size_t budget_bytes() const { return budget_; }

private:
    using Key = std::pair<FileVersion, int>;
    struct Entry {
        Key key;
        std::shared_ptr<const Column> column;
        std::size_t bytes;
    };
    using Entries = std::list<Entry>;

    void erase(Entries::iterator entry);

    std::size_t budget_;
    Available available_;
    std::size_t reserve_; // below which the machine is short of memory
    std::size_t used_ = 0;
    Entries entries_; // most recently used first
    std::map<Key, Entries::iterator> index_;
};

} // namespace orvane
