// Schemas: one that is taken has tables that records can be added to and read from.
#include "check.h"
#include "fuzzers.h"
#include "world.h"

#include "schema/schema_reader.h"
#include "table/field_value.h"

#include <algorithm>
#include <map>
#include <string>

namespace orvane::fuzz {

namespace {

constexpr std::int64_t widest_record = 20000; // that is tried: a wider one tells no more
constexpr std::size_t most_tables = 4;

void check_attribute(const Attribute &attribute)
{
    const std::string &name = attribute.name;
    FUZZ_CHECK(attribute.width >= 1, name);
    const std::string null = null_field(attribute);
    FUZZ_CHECK(static_cast<std::int64_t>(null.size()) == attribute.width, name);
    FUZZ_CHECK(null.find('\n') == std::string::npos, name);
    FUZZ_CHECK(is_null_field(attribute, null), name + " '" + null + "'");
    FUZZ_CHECK(decode_field(attribute, null).has_value(), name + " '" + null + "'");
    FUZZ_CHECK(parse_field_format(attribute.format).has_value(), attribute.format);
}

void check_key(const Relation &relation, const Key &key)
{
    for (const KeyElement &element : key) {
        FUZZ_CHECK(relation.has_field(element.begin), element.text());
        FUZZ_CHECK(!element.is_range() || relation.has_field(element.end), element.text());
    }
}

void check_relation(const Schema &schema, const Relation &relation)
{
    FUZZ_CHECK(!relation.fields().empty(), relation.name);
    std::int64_t size = 0;
    for (const RelationField &field : relation.fields()) {
        FUZZ_CHECK(field.offset == size, field.attribute->name);
        FUZZ_CHECK(schema.attribute(field.attribute->name) == field.attribute, field.attribute->name);
        size += field.attribute->width + 1;
    }
    FUZZ_CHECK(relation.record_size() == size, relation.name);
    FUZZ_CHECK(static_cast<std::int64_t>(relation.null_record().size()) == size - 1, relation.name);
    for (const Key *key : {&relation.primary, &relation.alternate, &relation.foreign})
        check_key(relation, *key);
    FUZZ_CHECK(relation.defines.empty() || schema.defining(relation.defines) == &relation, relation.defines);
}

// Puts something into every field of the scratch record, adds that and reads it back.
void check_records(World &world, Dbptr table, const Schema &schema, const Relation &relation)
{
    bool has_time_in_key = false;
    for (const KeyElement &element : relation.primary)
        has_time_in_key |= element.begin == schema.timestamp || element.end == schema.timestamp;
    static const char *const values[] = {"1", "12.5", "2018038", "-", "x", "0", "-1", "1 2 3 4"};
    Dbptr at = table;
    at.record = dbSCRATCH;
    for (std::size_t i = 0; i < relation.fields().size(); ++i) {
        at.field = static_cast<int64_t>(i);
        for (const char *value : values) {
            DbValue put{};
            put.type = dbSTRING;
            put.text = const_cast<char *>(value);
            const int code = dbputv(at, nullptr, &put);
            const std::string log = take_log();
            FUZZ_CHECK((code == 0) == log.empty(), log);
            if (code == 0)
                break;
        }
    }
    at.field = dbALL;
    const std::string scratch = whole_text(at);
    const int64_t number = dbadd(table, nullptr);
    const std::string log = take_log();
    FUZZ_CHECK((number == 0) == log.empty(), log);
    const std::string bytes = world.files.read(World::table_path(relation.name));
    if (number < 0) {
        FUZZ_CHECK(bytes.empty(), log);
        return;
    }
    FUZZ_CHECK(static_cast<std::int64_t>(bytes.size()) == relation.record_size(), bytes);
    FUZZ_CHECK(integer(table, dbRECORD_COUNT) == 1, take_log());
    at.record = 0;
    FUZZ_CHECK(whole_text(at) + "\n" == bytes, bytes);
    // Where it has a key the key finds it; else, or with the time in its key, it is added once more.
    const int64_t same = dbaddchk(table, whole_text(at).c_str());
    const std::string why = take_log();
    FUZZ_CHECK((same >= 0) == why.empty(), why);
    FUZZ_CHECK(same != 0 || !relation.primary.empty(), std::to_string(same));
    FUZZ_CHECK(same != 1 || relation.primary.empty() || has_time_in_key, std::to_string(same));
    FUZZ_CHECK(same <= 1, std::to_string(same));
    FUZZ_CHECK(dbmark(at) == 0, take_log());
    FUZZ_CHECK(dbcrunch(table) == 0, take_log());
    FUZZ_CHECK(integer(table, dbRECORD_COUNT) == (same == 1 ? 1 : 0), take_log());
}

void check_tables(World &world, Dbptr db, const Schema &schema)
{
    FUZZ_CHECK(integer(db, dbTABLE_COUNT) == static_cast<int64_t>(schema.relations().size()), take_log());
    std::size_t tried = 0;
    for (const Relation &relation : schema.relations()) {
        const Dbptr table = dblookup(db, "", relation.name.c_str(), "dbALL", "dbALL");
        FUZZ_CHECK(table.table >= 0, relation.name);
        FUZZ_CHECK(integer(table, dbFIELD_COUNT) == static_cast<int64_t>(relation.fields().size()), "");
        Tbl *joins = nullptr;
        FUZZ_CHECK(dbfind_join_tables(table, &joins) == 0, take_log());
        freetbl(joins, free);
        if (relation.record_size() <= widest_record && ++tried <= most_tables)
            check_records(world, table, schema, relation);
    }
}

} // namespace

void fuzz_schema(std::string_view input)
{
    World world;
    const std::string text(input);
    const auto schema = read_schema(text, "file");
    const std::string complaint = take_log(); // of a text that is no parameter file the log says where
    FUZZ_CHECK(complaint.empty() || (!schema.ok() && complaint.rfind("file:", 0) == 0), complaint);
    if (!schema.ok())
        FUZZ_CHECK(schema.status().message().rfind("file:", 0) == 0, std::string(schema.status().message()));
    world.files.write("/data/tried.yaml", text);
    world.files.write(World::descriptor_path, "schema: tried\n");
    Dbptr db{};
    const int code = dbopen_database(World::descriptor_path, "r+", &db);
    const std::string log = take_log();
    FUZZ_CHECK((code == 0) == log.empty(), log);
    FUZZ_CHECK((code == 0) == schema.ok(), log);
    if (!schema.ok())
        return;
    for (const Attribute &attribute : (*schema)->attributes())
        check_attribute(attribute);
    for (const Relation &relation : (*schema)->relations())
        check_relation(**schema, relation);
    check_tables(world, db, **schema);
    FUZZ_CHECK(OVdbclose(db) == 0, take_log());
}

} // namespace orvane::fuzz
