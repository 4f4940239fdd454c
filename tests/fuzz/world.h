// The databases that fuzzers open: in memory, of a schema with every type and every way of reading and
// printing it.
#pragma once

#include "db/opened.h"
#include "memory_file_system.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {
class Database;
class RecordTable;
} // namespace orvane

namespace orvane::fuzz {

// While one lives, databases are opened from its files and notices are kept. One at a time.
class World
{
public:
    static constexpr const char *descriptor_path = "/data/quakes";
    static constexpr const char *schema_path = "/data/fuzz.yaml";

    // With the schema and a descriptor; no tables.
    World();
    ~World();
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    static std::string table_path(const std::string &table)
    {
        return std::string(descriptor_path) + "." + table;
    }

    MemoryFileSystem files;
    std::string notices;

private:
    static void take_notice(const char *text, void *context);

    ScopedFileSystem installed_;
};

// The engine's own objects behind a pointer.
Database &database_of(Dbptr db);
std::shared_ptr<RecordTable> record_table_of(Dbptr table);

// Pieces of a text between separators.
std::vector<std::string_view> split(std::string_view text, char separator);
// Takes what stands before the separator, or all, off the text.
std::string_view take_until(std::string_view &text, char separator);

// The text of any length that `db` points to; dbget has to succeed.
std::string whole_text(Dbptr db);

// The text, filled up to the width or cut.
std::string fitted(std::string_view text, std::size_t width, bool to_the_right);
// A record of a table of the schema, without its line feed, from values between bars; what is left out is
// null.
std::string record_text(std::string_view table, std::string_view values);

} // namespace orvane::fuzz
