// The open databases of the process, by the index that pointers carry.
#pragma once

#include "catalog/database.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

class DatabaseRegistry
{
public:
    static DatabaseRegistry &of_process();

    // Opens through the current file system and answers the database's index; `table` gets the index of the
    // table that the path points at, or -1. Indexes are never used again, so that stale pointers fail.
    Result<std::int64_t> open(const std::string &path, const std::string &permissions, std::int64_t &table);
    // Whether there was such a database.
    bool close(std::int64_t index);

    Database *database(std::int64_t index) const
    {
        return index >= 0 && index < static_cast<std::int64_t>(databases_.size())
                   ? databases_[static_cast<std::size_t>(index)].get()
                   : nullptr;
    }
    // The open database of that name (the path given to open), or -1; the newest where there are several.
    std::int64_t index_of(const std::string &name) const;

private:
    // Databases on one file system share memory and open files. Kept while any of them is open.
    std::shared_ptr<Storage> storage_of(FileSystem &files);

    std::map<FileSystem *, std::weak_ptr<Storage>> storages_;
    std::vector<std::shared_ptr<Storage>> storage_by_database_; // outlives the databases below
    std::vector<std::unique_ptr<Database>> databases_;
};

} // namespace orvane
