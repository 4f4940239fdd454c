// An open database: its descriptor, its schema, and its tables.
#pragma once

#include "catalog/database_locator.h"
#include "storage/storage.h"
#include "table/base_table.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

class Database
{
public:
    // The storage has to outlive the database.
    Database(LocatedDatabase located, bool writable, Storage &storage);
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    const std::string &name() const { return path_.shown; }
    const LocatedPath &path() const { return path_; }
    const Descriptor &descriptor() const { return descriptor_; }
    const Schema &schema() const { return *schema_; }
    bool opened_for_writing() const { return writable_; }

    // Tables by index: base tables 0…n-1 in schema order, then views. Null where there is none (any more).
    Table *table(std::int64_t index) const
    {
        return index >= 0 && index < static_cast<std::int64_t>(tables_.size())
                   ? tables_[static_cast<std::size_t>(index)].get()
                   : nullptr;
    }
    // One beyond the last index.
    std::int64_t table_end() const { return static_cast<std::int64_t>(tables_.size()); }
    // Base tables and views.
    std::int64_t table_count() const;
    // The index of a base table or view, or -1.
    std::int64_t table_index(std::string_view table_name) const;
    std::vector<std::string_view> table_names() const;

    // Keeps a text that was made to answer a question about a table (null: about the database) until the same
    // question is asked again, and answers where it is kept.
    const std::string &keep_answer(int question, const Table *about, std::string text)
    {
        return answers_[{question, about}] = std::move(text);
    }

private:
    LocatedPath path_;
    Descriptor descriptor_;
    std::shared_ptr<const Schema> schema_;
    bool writable_;
    std::vector<std::unique_ptr<Table>> tables_;
    std::map<std::pair<int, const Table *>, std::string> answers_;
};

} // namespace orvane
