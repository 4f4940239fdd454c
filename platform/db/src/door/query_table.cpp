#include "door/query_table.h"

#include <algorithm>
#include <array>

namespace orvane {

namespace {

std::vector<std::string> key_texts(const Subject &subject, Key Relation::*which)
{
    std::vector<std::string> texts;
    for (const Relation *relation : subject.table->members())
        for (const KeyElement &element : relation->*which)
            if (std::find(texts.begin(), texts.end(), element.text()) == texts.end())
                texts.push_back(element.text());
    return texts;
}

std::vector<std::string> field_names(const Subject &subject)
{
    std::vector<std::string> names;
    for (const TableField &field : subject.table->fields())
        names.push_back(field.attribute->name);
    return names;
}

std::vector<std::string> member_names(const Subject &subject)
{
    std::vector<std::string> names;
    for (const Relation *relation : subject.table->members())
        names.push_back(relation->name);
    return names;
}

std::vector<std::string> table_names(const Subject &subject)
{
    const auto names = subject.database->table_names();
    return {names.begin(), names.end()};
}

std::map<std::string, std::string> link_fields(const Subject &subject)
{
    std::map<std::string, std::string> links;
    for (const Relation &relation : subject.database->schema().relations())
        if (!relation.defines.empty())
            links.emplace(relation.defines, relation.name);
    return links;
}

std::string dbpath(const Subject &subject)
{
    std::string joined;
    for (const std::string &folder : subject.database->descriptor().dbpath)
        joined += (joined.empty() ? "" : ":") + folder;
    return joined;
}

// The id that the table defines; of a view, its first member's that defines one.
std::string unique_id(const Subject &subject)
{
    for (const Relation *relation : subject.table->members())
        if (!relation->defines.empty())
            return relation->defines;
    return {};
}

std::int64_t record_count(const Subject &subject, Answer &answer)
{
    RecordCount count = subject.table->count_records();
    answer.remark = std::move(count.refusal);
    return count.records;
}

std::int64_t table_size(const Subject &subject, Answer &answer)
{
    return record_count(subject, answer) * subject.table->record_size();
}

std::int64_t is_present(const Subject &subject, Answer &answer)
{
    const auto present = subject.table->is_present();
    if (!present.ok())
        answer.remark = present.status();
    return present.ok() && *present ? 1 : 0;
}

// clang-format off
using S = const Subject &;
const QueryRow rows[] = {
    {dbTABLE_COUNT, "table count", Level::Database, [](S s, Answer &) { return s.database->table_count(); }},
    {dbFIELD_COUNT, "field count", Level::Table, [](S s, Answer &) { return static_cast<std::int64_t>(s.table->fields().size()); }},
    {dbRECORD_COUNT, "record count", Level::Table, record_count},
    {dbSCHEMA_DESCRIPTION, "schema description", Level::Database, [](S s) -> const std::string & { return s.database->schema().description; }},
    {dbDATABASE_DESCRIPTION, "database description", Level::Database, [](S s) -> const std::string & { return s.database->descriptor().description; }},
    {dbTABLE_DESCRIPTION, "table description", Level::Table, [](S s) { return s.table->description(); }},
    {dbFIELD_DESCRIPTION, "field description", Level::Field, [](S s) -> const std::string & { return s.field->attribute->description; }},
    {dbSCHEMA_DETAIL, "schema detail", Level::Database, [](S s) -> const std::string & { return s.database->schema().detail; }},
    {dbDATABASE_DETAIL, "database detail", Level::Database, [](S s) -> const std::string & { return s.database->descriptor().detail; }},
    {dbTABLE_DETAIL, "table detail", Level::Table, [](S s) { return s.table->detail(); }},
    {dbFIELD_DETAIL, "field detail", Level::Field, [](S s) -> const std::string & { return s.field->attribute->detail; }},
    {dbSCHEMA_NAME, "schema name", Level::Database, [](S s) -> const std::string & { return s.database->schema().name; }},
    {dbDATABASE_NAME, "database name", Level::Database, [](S s) -> const std::string & { return s.database->name(); }},
    {dbTABLE_NAME, "table name", Level::Table, [](S s) -> const std::string & { return s.table->name(); }},
    {dbFIELD_NAME, "field name", Level::Field, [](S s) -> const std::string & { return s.field->attribute->name; }},
    {dbTABLE_PRESENT, "table present", Level::Table, is_present},
    {dbTABLE_SIZE, "table size", Level::Table, table_size},
    {dbFIELD_SIZE, "field size", Level::Field, [](S s, Answer &) { return s.field->attribute->width; }},
    {dbFIELD_UNITS, "field units", Level::Field, [](S s) -> const std::string & { return s.field->attribute->units; }},
    {dbFIELD_TYPE, "field type", Level::Field, [](S s, Answer &) { return static_cast<std::int64_t>(s.field->attribute->type); }},
    {dbTABLE_FILENAME, "table file name", Level::Table, [](S s) { return s.table->file_name(); }},
    {dbDBPATH, "database path", Level::Database, dbpath},
    {dbTABLE_DIRNAME, "table folder name", Level::Table, [](S s) { return s.table->folder_name(); }},
    {dbPRIMARY_KEY, "primary key", Level::Table, [](S s) { return key_texts(s, &Relation::primary); }},
    {dbALTERNATE_KEY, "alternate key", Level::Table, [](S s) { return key_texts(s, &Relation::alternate); }},
    {dbFOREIGN_KEYS, "foreign keys", Level::Table, [](S s) { return key_texts(s, &Relation::foreign); }},
    {dbUNIQUE_ID_NAME, "unique id name", Level::Table, unique_id},
    {dbFIELD_RANGE, "field range", Level::Field, [](S s) -> const std::string & { return s.field->attribute->range; }},
    {dbRECORD_SIZE, "record size", Level::Table, [](S s, Answer &) { return s.table->record_size(); }},
    {dbFIELD_FORMAT, "field format", Level::Field, [](S s) -> const std::string & { return s.field->attribute->format; }},
    {dbFIELD_INDEX, "field index", Level::Field, [](S s, Answer &) { return s.field->offset; }},
    {dbTABLE_FIELDS, "table fields", Level::Table, field_names},
    {dbVIEW_TABLES, "view tables", Level::Table, member_names},
    {dbLINK_FIELDS, "link fields", Level::Database, link_fields},
    {dbTABLE_IS_WRITABLE, "table is writable", Level::Table, [](S s, Answer &) -> std::int64_t { return s.table->is_writable() ? 1 : 0; }},
    {dbTABLE_IS_VIEW, "table is view", Level::Table, [](S s, Answer &) -> std::int64_t { return s.table->is_view() ? 1 : 0; }},
    {dbFIELD_BASE_TABLE, "field base table", Level::Field, [](S s) -> const std::string & { return s.field->relation->name; }},
    {dbTIMEDATE_NAME, "timedate name", Level::Database, [](S s) -> const std::string & { return s.database->schema().timestamp; }},
    {dbDATABASE_FILENAME, "database file name", Level::Database, [](S s) -> const std::string & { return s.database->path().shown; }},
    {dbSCHEMA_TABLES, "schema tables", Level::Database, table_names},
    {dbIDSERVER, "id server", Level::Database, [](S s) -> const std::string & { return s.database->descriptor().idserver; }},
    {dbLOCKS, "locks", Level::Database, [](S s) -> std::string { return s.database->descriptor().locks == Locks::Local ? "local" : "none"; }},
    {dbTABLE_CREATION, "table creation", Level::Table, [](S s) { return s.table->creation(); }},
    {dbTABLE_NUMBERING, "table numbering", Level::Table, [](S s, Answer &) { return s.table->numbering(); }},
    {dbTABLE_VERSION, "table version", Level::Table, [](S s, Answer &) { return s.table->version(); }},
    {dbNULL, "field null", Level::Field, [](S s) -> const std::string & { return s.field->attribute->null; }},
};
// clang-format on

// Rows by code, so that a question costs no search. All codes but dbNULL lie in this span.
constexpr int first_code = dbTABLE_COUNT;
constexpr int last_code = dbTABLE_VERSION;
using RowByCode = std::array<const QueryRow *, first_code - last_code + 1>;

RowByCode index_rows()
{
    RowByCode index{};
    for (const QueryRow &row : rows)
        if (row.code != dbNULL)
            index[static_cast<std::size_t>(first_code - row.code)] = &row;
    return index;
}

} // namespace

const QueryRow *find_query(int code)
{
    static const RowByCode index = index_rows();
    static const QueryRow *const row_of_null = &rows[std::size(rows) - 1];
    if (code <= first_code && code >= last_code)
        return index[static_cast<std::size_t>(first_code - code)];
    return code == dbNULL ? row_of_null : nullptr;
}

} // namespace orvane
