// dbget, dbgetv, dbget_range and dbread_ahead: records and their fields.
#include "door/guard.h"
#include "door/row_pointer.h"
#include "door/subject.h"

#include "base/concat.h"
#include "table/field_value.h"

#include <orvane/db.h>

#include <cstdlib>
#include <cstring>

using namespace orvane;

namespace {

// The text of the record that a pointer of table level points to.
Result<std::string_view> record_text(const Subject &subject, const char *call)
{
    const std::int64_t record = subject.pointer.record;
    if (record >= 0)
        return subject.table->record(record);
    if (record == dbNULL)
        return subject.table->special_record(SpecialRecord::Null);
    if (record == dbSCRATCH)
        return subject.table->special_record(SpecialRecord::Scratch);
    return Status(Code::Argument, concat(call, ": the pointer ", pointer_text(subject.pointer),
                                         " does not point to a record of table ", subject.table->name()));
}

// The text of the field that a pointer of field level points to.
Result<std::string_view> cell_text(const Subject &subject, const char *call)
{
    if (subject.pointer.record >= 0)
        return subject.table->cell(subject.pointer.record, static_cast<std::size_t>(subject.pointer.field));
    const auto record = record_text(subject, call);
    if (!record.ok())
        return record;
    return record->substr(static_cast<std::size_t>(subject.field->offset),
                          static_cast<std::size_t>(subject.field->attribute->width));
}

Dbptr pointer_to_bundle(Database &database, std::int64_t database_index, const Bundle &bundle)
{
    const std::int64_t table = database.index_for_bundles(bundle.table);
    return pointer_to_rows(database_index, table, bundle.first, bundle.end);
}

Level level_of_field(const Dbptr &db)
{
    return db.field == dbALL ? Level::Table : Level::Field;
}

std::int64_t get_text(const Dbptr &db, char *buffer, std::size_t capacity)
{
    Subject subject;
    if (Status found = find_subject(db, level_of_field(db), "dbget", subject); !found.ok())
        return code_of(found);
    const auto text = subject.field ? cell_text(subject, "dbget") : record_text(subject, "dbget");
    if (!text.ok())
        return code_of(text.status());
    if (text->size() < capacity) {
        text->copy(buffer, text->size());
        buffer[text->size()] = '\0';
    }
    return static_cast<std::int64_t>(text->size());
}

std::int64_t get_to_scratch(const Dbptr &db)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbget", subject); !found.ok())
        return code_of(found);
    const auto record = record_text(subject, "dbget");
    if (!record.ok())
        return code_of(record.status());
    const auto length = static_cast<std::int64_t>(record->size());
    if (Status copied = subject.table->set_scratch(*record); !copied.ok())
        return code_of(copied);
    return length;
}

Status hand_over(const FieldValue &value, DbValue &out)
{
    DbValue filled{};
    filled.type = static_cast<std::int64_t>(value.type);
    filled.integer = value.integer;
    filled.real = value.real;
    filled.dbptr = Dbptr{value.dbptr[0], value.dbptr[1], value.dbptr[2], value.dbptr[3]};
    if (value.type == FieldType::String) {
        filled.text = static_cast<char *>(std::malloc(value.text.size() + 1));
        if (!filled.text)
            return Status(Code::Memory, "dbgetv: out of memory");
        value.text.copy(filled.text, value.text.size());
        filled.text[value.text.size()] = '\0';
    }
    out = filled;
    return Status();
}

Status not_a_value(const Subject &subject, std::string_view text)
{
    const Attribute &attribute = *subject.field->attribute;
    const std::string kept(text); // asking for the file's name looks at the file, which may end the text
    const std::string file = subject.table->file_name();
    return Status(Code::Value, concat("dbgetv: ", file.empty() ? subject.table->name() : file, ": record ",
                                      subject.pointer.record, ", field ", attribute.name, ": '", kept,
                                      "' is not a value of type ", type_name(attribute.type)));
}

Status get_value(Dbptr db, const char *field, DbValue &out)
{
    Subject subject;
    if (field) {
        if (Status found = find_subject(db, Level::Table, "dbgetv", subject); !found.ok())
            return found;
        const int standing_on = db.field >= 0 ? static_cast<int>(db.field) : -1;
        const int index = subject.table->field_index(field, standing_on);
        if (index < 0)
            return Status(Code::NotFound,
                          concat("dbgetv: no field '", field, "' in table ", subject.table->name()));
        db.field = index;
    }
    if (Status found = find_subject(db, Level::Field, "dbgetv", subject); !found.ok())
        return found;
    const auto text = cell_text(subject, "dbgetv");
    if (!text.ok())
        return text.status();
    if (const auto bundle = subject.table->bundle(db.record, static_cast<std::size_t>(db.field))) {
        out.type = dbDBPTR;
        out.dbptr = pointer_to_bundle(*subject.database, db.database, *bundle);
        return Status();
    }
    const auto value = decode_field(*subject.field->attribute, *text);
    return value ? hand_over(*value, out) : not_a_value(subject, *text);
}

// The rows that the cell stands for to which the pointer points, if it is one of a bundle.
std::optional<Bundle> bundle_of(const Subject &subject)
{
    const Dbptr &db = subject.pointer;
    if (db.record < 0 || db.field < 0 ||
        db.field >= static_cast<std::int64_t>(subject.table->fields().size()))
        return std::nullopt;
    return subject.table->bundle(db.record, static_cast<std::size_t>(db.field));
}

Status get_range(const Dbptr &db, std::int64_t &first, std::int64_t &end)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbget_range", subject); !found.ok())
        return found;
    if (db.record != dbALL && db.record < 0)
        return Status(Code::Argument, concat("dbget_range: the pointer ", pointer_text(db),
                                             " points to a record without a number"));
    const RecordCount count = subject.table->count_records();
    if (!count.refusal.ok())
        log_failure(count.refusal);
    if (const auto bundle = bundle_of(subject)) {
        first = bundle->first;
        end = bundle->end;
        return Status();
    }
    if (db.record >= count.records)
        return Status(Code::NotFound, concat("dbget_range: no record ", db.record, " in table ",
                                             subject.table->name(), ", which has ", count.records));
    first = db.record == dbALL ? 0 : db.record;
    end = db.record == dbALL ? count.records : end_of_rows(db);
    return Status();
}

Status read_ahead(const Dbptr &db)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbread_ahead", subject); !found.ok())
        return found;
    if (db.record < 0)
        return Status(Code::Argument, concat("dbread_ahead: the pointer ", pointer_text(db),
                                             " points to a record without a number"));
    subject.table->read_ahead(db.record, end_of_rows(db));
    return Status();
}

} // namespace

int64_t dbget(Dbptr db, char *buffer, size_t capacity)
{
    return guarded("dbget", [&] { return buffer ? get_text(db, buffer, capacity) : get_to_scratch(db); });
}

int dbgetv(Dbptr db, const char *field, DbValue *value)
{
    return guarded("dbgetv", [&] {
        if (!value)
            return code_of(Status(Code::Argument, "dbgetv: the place for the value is null"));
        *value = DbValue{};
        return code_of(get_value(db, field, *value));
    });
}

int dbget_range(Dbptr db, int64_t *first, int64_t *end)
{
    return guarded("dbget_range", [&] {
        if (!first || !end)
            return code_of(Status(Code::Argument, "dbget_range: a place for the range is null"));
        *first = *end = 0;
        return code_of(get_range(db, *first, *end));
    });
}

int dbread_ahead(Dbptr db)
{
    return guarded("dbread_ahead", [&] { return code_of(read_ahead(db)); });
}
