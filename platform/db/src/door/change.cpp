#include "door/change.h"

namespace orvane {

namespace {

constexpr FieldType all_types[] = {FieldType::Boolean, FieldType::Integer, FieldType::Real, FieldType::Time,
                                   FieldType::Yearday, FieldType::String,  FieldType::Dbptr};

} // namespace

Result<FieldValue> value_of(const DbValue *value)
{
    if (!value)
        return Status(Code::Argument, "the value is null");
    for (const FieldType type : all_types) {
        if (static_cast<std::int64_t>(type) != value->type)
            continue;
        FieldValue out;
        out.type = type;
        out.integer = value->integer;
        out.real = value->real;
        if (type == FieldType::String && !value->text)
            return Status(Code::Argument, "the text of the value is null");
        if (type == FieldType::String)
            out.text = value->text;
        out.dbptr = {value->dbptr.database, value->dbptr.table, value->dbptr.field, value->dbptr.record};
        return out;
    }
    return Status(Code::Argument, concat("there is no type ", value->type, " of values"));
}

Result<std::size_t> field_of(const Subject &subject, const char *name)
{
    const Table &table = *subject.table;
    const Dbptr &db = subject.pointer;
    int field = db.field >= 0 && db.field < static_cast<std::int64_t>(table.fields().size())
                    ? static_cast<int>(db.field)
                    : -1;
    if (name) {
        field = table.field_index(name, field);
        if (field < 0)
            return Status(Code::NotFound, concat("no field '", name, "' in table ", table.name()));
    }
    if (field < 0)
        return Status(Code::Argument, concat("the pointer ", pointer_text(db),
                                             " does not point to a field of table ", table.name()));
    return static_cast<std::size_t>(field);
}

} // namespace orvane
