// A table of the schema, and its file.
#pragma once

#include "table/record_file.h"
#include "table/record_table.h"

namespace orvane {

class BaseTable : public RecordTable
{
public:
    // `places` are the paths where the file may be, in order of search. The relation, owned by the
    // schema, and the storage have to outlive the table.
    BaseTable(const Relation &relation, const std::string &schema_name, Storage &storage,
              std::vector<LocatedPath> places, bool writable);

    const std::string &name() const override { return relation_.name; }
    bool is_view() const override { return false; }
    const std::vector<const Relation *> &members() const override { return members_; }
    const std::vector<TableField> &fields() const override { return fields_; }
    int field_index(std::string_view field_name, int standing_on) const override;
    std::int64_t record_size() const override { return relation_.record_size(); }

    RecordCount count_records() override;
    Result<std::string_view> record(std::int64_t number) override;
    std::string_view special_record(SpecialRecord which) const override;
    Status set_scratch(std::string_view record_text) override;

    Result<bool> is_present() override;
    std::string file_name() override;
    std::string folder_name() override;
    bool is_writable() override;
    std::string creation() const override { return "dbopen " + relation_.name; }
    std::string description() const override { return relation_.description; }
    std::string detail() const override { return relation_.detail; }

    Snapshot snapshot() override;
    std::uint64_t generation() const override { return file_.generation(); }
    Result<std::vector<ColumnPtr>> columns(std::span<const int> fields, const Snapshot &as_of,
                                           Work &work) override;

    bool has_room_for(std::span<const int> fields, const Snapshot &as_of) const override;
    bool has_record_file() const override { return true; }
    Result<std::unique_ptr<RandomAccessFile>> open_records(const Snapshot &as_of, Work &work) const override;
    void tell_unreadable(int field, std::int64_t count) const override;

    RecordFile &file() { return file_; }

private:
    Result<std::vector<std::shared_ptr<Column>>> decode(const std::vector<RelationField> &fields,
                                                        const Snapshot &as_of, Work &work) const;

    const Relation &relation_;
    Storage &storage_;
    const bool opened_for_writing_;
    const std::vector<const Relation *> members_;
    std::vector<TableField> fields_;
    std::string scratch_;
    RecordFile file_;
};

} // namespace orvane
