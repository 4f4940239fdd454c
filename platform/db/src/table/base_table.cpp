#include "table/base_table.h"

#include "base/concat.h"
#include "column/column_decoder.h"

#include <orvane/util.h>

namespace orvane {

BaseTable::BaseTable(const Relation &relation, const Schema &schema, Storage &storage,
                     std::vector<LocatedPath> places, bool writable, FilePolicy policy)
    : relation_(relation), storage_(storage), opened_for_writing_(writable),
      policy_(policy), members_{&relation}, scratch_(relation.null_record()),
      file_(storage, std::move(places), relation.record_size(),
            concat("table ", relation.name, " of schema ", schema.name), policy),
      editor_(storage, file_, relation.record_size(), policy), rules_(relation, schema.timestamp),
      index_(relation)
{
    for (const RelationField &field : relation.fields())
        fields_.push_back(TableField{field.attribute, &relation, field.offset});
}

int BaseTable::field_index(std::string_view field_name, int) const
{
    const auto dot = field_name.find('.');
    if (dot == std::string_view::npos)
        return relation_.field_index(field_name);
    return field_name.substr(0, dot) == relation_.name ? relation_.field_index(field_name.substr(dot + 1))
                                                       : -1;
}

RecordCount BaseTable::count_records()
{
    const std::int64_t records = file_.count_records();
    return RecordCount{records, file_.refusal()};
}

std::int64_t BaseTable::numbering()
{
    static_cast<void>(file_.count_records());
    return static_cast<std::int64_t>(file_.generation());
}

std::int64_t BaseTable::version()
{
    static_cast<void>(file_.count_records());
    return static_cast<std::int64_t>(file_.version());
}

Result<std::string_view> BaseTable::record(std::int64_t number)
{
    return file_.record(number);
}

std::string_view BaseTable::special_record(SpecialRecord which) const
{
    return which == SpecialRecord::Scratch ? std::string_view(scratch_) : relation_.null_record();
}

Status BaseTable::set_scratch(std::string_view record_text)
{
    if (record_text.size() != scratch_.size())
        return Status(Code::Format, concat("a record of table ", relation_.name, " has ", scratch_.size(),
                                           " bytes, the text has ", record_text.size()));
    scratch_ = record_text;
    return Status();
}

Result<bool> BaseTable::is_present()
{
    if (Status looked = file_.look(); !looked.ok())
        return looked;
    return file_.present();
}

Snapshot BaseTable::snapshot()
{
    const std::int64_t records = file_.count_records();
    return Snapshot{records, file_.version(), file_.refusal(), file_.generation()};
}

Result<std::vector<ColumnPtr>> BaseTable::columns(std::span<const int> fields, const Snapshot &as_of,
                                                  Work &work)
{
    std::vector<ColumnPtr> columns(fields.size());
    std::vector<RelationField> missing;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (!(columns[i] = storage_.columns.find(as_of.version, fields[i])))
            missing.push_back(relation_.fields()[static_cast<std::size_t>(fields[i])]);
    if (missing.empty())
        return columns;
    auto decoded = decode(missing, as_of, work);
    if (!decoded.ok())
        return decoded.status();
    std::size_t next = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (columns[i])
            continue;
        tell_unreadable(fields[i], (*decoded)[next]->unreadable);
        columns[i] = std::move((*decoded)[next++]);
        storage_.columns.keep(as_of.version, fields[i], columns[i]);
    }
    return columns;
}

Result<std::vector<std::shared_ptr<Column>>> BaseTable::decode(const std::vector<RelationField> &fields,
                                                               const Snapshot &as_of, Work &work) const
{
    if (as_of.records == 0) {
        std::vector<std::shared_ptr<Column>> empty;
        for (const RelationField &field : fields)
            empty.push_back(new_column(*field.attribute, 0));
        return empty;
    }
    const auto file = open_records(as_of, work);
    if (!file.ok())
        return file.status();
    return decode_columns(RecordSpan{**file, as_of.records, relation_.record_size(), file_.path().shown},
                          fields, work);
}

bool BaseTable::has_room_for(std::span<const int> fields, const Snapshot &as_of) const
{
    std::size_t bytes = 0;
    for (const int field : fields) {
        if (storage_.columns.find(as_of.version, field))
            continue;
        const Attribute &attribute = *relation_.fields()[static_cast<std::size_t>(field)].attribute;
        bytes +=
            static_cast<std::size_t>(as_of.records) *
            (column_storage(attribute.type) == ColumnStorage::Text ? sizeof(std::uint32_t) : sizeof(double));
    }
    return storage_.columns.has_room_for(bytes);
}

Result<std::unique_ptr<RandomAccessFile>> BaseTable::open_records(const Snapshot &as_of, Work &work) const
{
    if (as_of.version == file_.version()) {
        auto file = file_.open_beside();
        if (!file.ok() || *file)
            return file;
    }
    work.meet_change();
    return Status(Code::Io, concat(file_.path().shown, ": changed while it was read"));
}

void BaseTable::tell_unreadable(int field, std::int64_t count) const
{
    const Attribute &attribute = *relation_.fields()[static_cast<std::size_t>(field)].attribute;
    if (count > 0)
        elog_notice("%s: field %s: %lld values are not of type %s and count as null",
                    file_.path().shown.c_str(), attribute.name.c_str(), static_cast<long long>(count),
                    std::string(type_name(attribute.type)).c_str());
}

// The reason why a folder can't be searched comes with the questions about what is in the file.
std::string BaseTable::file_name()
{
    static_cast<void>(file_.look().ok());
    return file_.path().shown;
}

std::string BaseTable::folder_name()
{
    static_cast<void>(file_.look().ok());
    return file_.path().folder().shown;
}

bool BaseTable::is_writable()
{
    if (!opened_for_writing_ || !count_records().refusal.ok())
        return false;
    return storage_.files.is_writable(file_.present() ? file_.path().absolute
                                                      : file_.path().folder().absolute);
}

} // namespace orvane
