// dbcreate_database, dbfind_schemas and dbread_schema.
#include "door/guard.h"
#include "door/text_lists.h"

#include "base/concat.h"
#include "catalog/new_database.h"

#include <orvane/db_create.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

using namespace orvane;

namespace {

std::string text_or_nothing(const char *text)
{
    return text ? text : "";
}

char *new_text(const std::string &text)
{
    char *copy = strdup(text.c_str());
    if (!copy)
        throw std::bad_alloc();
    return copy;
}

std::vector<std::string_view> views_of(const std::vector<std::string> &texts)
{
    return {texts.begin(), texts.end()};
}

Status create(const char *path, const char *schema, const char *description, const char *detail)
{
    const std::string place = text_or_nothing(path);
    Descriptor descriptor;
    descriptor.schema = text_or_nothing(schema);
    descriptor.description = text_or_nothing(description);
    descriptor.detail = text_or_nothing(detail);
    if (place.empty() || place.ends_with('/'))
        return Status(Code::Argument,
                      "dbcreate_database: the path of the new database has no name at its end");
    if (descriptor.schema.empty())
        return Status(Code::Argument, concat("dbcreate_database: ", place, ": no schema is named"));
    for (const std::string *line : {&descriptor.schema, &descriptor.description})
        if (std::any_of(line->begin(), line->end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }))
            return Status(Code::Argument,
                          concat("dbcreate_database: ", place, ": schema and description are one line each"));
    Status created = create_database(current_file_system(), LocatedPath::from(place), std::move(descriptor));
    return created.ok() ? created : Status(created.code(), concat("dbcreate_database: ", created.message()));
}

void fill(const Schema &schema, DbSchema &out)
{
    std::vector<std::string> descriptions;
    std::vector<std::string> fields;
    for (const Relation &relation : schema.relations()) {
        descriptions.push_back(relation.description);
        std::string &names = fields.emplace_back();
        for (const RelationField &field : relation.fields())
            names.append(names.empty() ? "" : " ").append(field.attribute->name);
    }
    out.name = new_text(schema.name);
    out.description = new_text(schema.description);
    out.file = new_text(schema.file);
    out.tables = new_text_list(schema.relation_names());
    out.descriptions = new_text_list(views_of(descriptions));
    out.fields = new_text_list(views_of(fields));
}

} // namespace

int dbcreate_database(const char *path, const char *schema, const char *description, const char *detail)
{
    return guarded("dbcreate_database", [&] { return code_of(create(path, schema, description, detail)); });
}

int dbfind_schemas(const char *folder, Tbl **names)
{
    return guarded("dbfind_schemas", [&] {
        if (!names)
            return code_of(Status(Code::Argument, "dbfind_schemas: there is no place for the answer"));
        *names = nullptr;
        const std::vector<std::string> found =
            schema_names(current_file_system(), LocatedPath::from(folder && *folder ? folder : "."));
        *names = new_text_list(views_of(found));
        return 0;
    });
}

int dbread_schema(const char *folder, const char *schema, DbSchema *found)
{
    return guarded("dbread_schema", [&] {
        if (!found)
            return code_of(Status(Code::Argument, "dbread_schema: there is no place for the answer"));
        *found = DbSchema{};
        const auto read =
            find_schema(current_file_system(), LocatedPath::from(folder && *folder ? folder : "."),
                        text_or_nothing(schema));
        if (!read.ok())
            return code_of(read.status());
        try {
            fill(**read, *found);
        } catch (...) {
            dbfree_schema(found);
            throw;
        }
        return 0;
    });
}

void dbfree_schema(DbSchema *schema)
{
    if (!schema)
        return;
    for (char *text : {schema->name, schema->description, schema->file})
        std::free(text);
    for (Tbl *list : {schema->tables, schema->descriptions, schema->fields})
        freetbl(list, std::free);
    *schema = DbSchema{};
}
