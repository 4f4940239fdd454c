#include "table/base_table.h"

#include "base/concat.h"

namespace orvane {

BaseTable::BaseTable(const Relation &relation, const std::string &schema_name, Storage &storage,
                     std::vector<LocatedPath> places, bool writable)
    : relation_(relation), storage_(storage), opened_for_writing_(writable), members_{&relation},
      scratch_(relation.null_record()), file_(storage, std::move(places), relation.record_size(),
                                              concat("table ", relation.name, " of schema ", schema_name))
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
