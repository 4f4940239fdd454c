#include "world.h"

#include "catalog/database_registry.h"
#include "catalog/schema_locator.h"
#include "check.h"
#include "schema/schema_reader.h"

#include <algorithm>

namespace orvane::fuzz {

namespace {

constexpr std::string_view schema_text = R"yaml(name: fuzz
timestamp: lddate
not_joined: [lat, amp, flag]
attributes:
  flag: {type: boolean, width: 2, format: "%2d", null: "-1"}
  orid: {type: integer, width: 8, format: "%8d", null: "-1", range: "orid > 0"}
  big: {type: integer, width: 20, format: "%020d", null: "-1"}
  lat: {type: real, width: 9, format: "%9.4f", null: "-999.0000", range: "lat >= -90.0 && lat <= 90.0"}
  amp: {type: real, width: 12, format: "%12.4e", null: "-1.0"}
  slow: {type: real, width: 8, format: "%-8.5g", null: "-1"}
  time: {type: time, width: 17, format: "%17.5f", null: "-9999999999.99900"}
  jdate: {type: yearday, width: 8, format: "%8d", null: "-1"}
  sta: {type: string, width: 6, format: "%-6s", null: "-"}
  auth: {type: string, width: 15, format: "%-15.12s", null: "-", range: "auth !~ '[<>]'"}
  rows: {type: dbptr, width: 16, format: "%16s", null: "-"}
  ondate: {type: yearday, width: 8, format: "%8d", null: "-1"}
  offdate: {type: yearday, width: 8, format: "%8d", null: "-1"}
  lddate: {type: time, width: 17, format: "%17.5f", null: "-9999999999.99900"}
relations:
  every:
    fields: [flag, orid, big, lat, amp, slow, time, jdate, sta, auth, rows, lddate]
    primary: [orid]
    defines: orid
  arrival:
    fields: [sta, time, orid, jdate, lddate]
    primary: [sta, time]
    foreign: [orid]
  site:
    fields: [sta, ondate, offdate, lat, lddate]
    primary: [sta, {range: "ondate::offdate", covers: [jdate, time]}]
)yaml";

} // namespace

World::World() : installed_(files)
{
    elog_set_notice_hook(&take_notice, this);
    elog_clear();
    files.write(schema_path, schema_text);
    files.write(descriptor_path, "schema: fuzz\n");
    // Databases share a schema that is as it was when it was read: so it is read once in a process.
    static const auto kept = SchemaLocator(files, LocatedPath::from(MemoryFileSystem::folder)).load("fuzz");
    FUZZ_CHECK(kept.ok(), std::string(kept.status().message()));
}

World::~World()
{
    elog_set_notice_hook(nullptr, nullptr);
    elog_clear();
}

void World::take_notice(const char *text, void *context)
{
    static_cast<World *>(context)->notices.append(text).append("\n");
}

Database &database_of(Dbptr db)
{
    Database *database = DatabaseRegistry::of_process().database(db.database);
    FUZZ_CHECK(database != nullptr, "the database is open");
    return *database;
}

std::shared_ptr<RecordTable> record_table_of(Dbptr table)
{
    auto found = std::dynamic_pointer_cast<RecordTable>(database_of(table).shared_table(table.table));
    FUZZ_CHECK(found != nullptr, "a table has records");
    return found;
}

std::string_view take_until(std::string_view &text, char separator)
{
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    while (!text.empty())
        pieces.push_back(take_until(text, separator));
    return pieces;
}

std::string whole_text(Dbptr db)
{
    std::string buffer(256, '\0');
    int64_t length = dbget(db, buffer.data(), buffer.size());
    if (length >= static_cast<int64_t>(buffer.size())) {
        buffer.resize(static_cast<std::size_t>(length) + 1);
        length = dbget(db, buffer.data(), buffer.size());
    }
    FUZZ_CHECK(length >= 0, take_log());
    buffer.resize(static_cast<std::size_t>(length));
    return buffer;
}

std::string fitted(std::string_view text, std::size_t width, bool to_the_right)
{
    text = text.substr(0, width);
    const std::string blanks(width - text.size(), ' ');
    return to_the_right ? blanks + std::string(text) : std::string(text) + blanks;
}

std::string record_text(std::string_view table, std::string_view values)
{
    static const auto schema = read_schema(std::string(schema_text), World::schema_path).value();
    const Relation *relation = schema->relation(table);
    FUZZ_CHECK(relation != nullptr, std::string(table));
    std::string record;
    for (const RelationField &place : relation->fields()) {
        const std::string_view value = take_until(values, '|');
        record += (record.empty() ? "" : " ") +
                  fitted(value.empty() ? std::string_view(place.attribute->null) : value,
                         static_cast<std::size_t>(place.attribute->width), is_number(place.attribute->type));
    }
    return record;
}

} // namespace orvane::fuzz
