// What the table files of all databases share: memory for their blocks and decoded columns, and open files.
#pragma once

#include "column/column_cache.h"
#include "storage/block_cache.h"
#include "storage/file_handle_pool.h"
#include "storage/file_system.h"

namespace orvane {

struct StorageLimits {
    std::size_t cache_bytes = 64u << 20;
    std::size_t open_files = 64;
    std::size_t block_bytes = 64u << 10;
    std::size_t column_bytes = column_budget();
};

struct Storage {
    explicit Storage(FileSystem &file_system, StorageLimits storage_limits = {})
        : files(file_system), limits(storage_limits), blocks(storage_limits.cache_bytes),
          columns(storage_limits.column_bytes), handles(storage_limits.open_files)
    {
    }

    FileSystem &files;
    StorageLimits limits;
    BlockCache blocks;
    ColumnCache columns;
    FileHandlePool handles;
};

} // namespace orvane
