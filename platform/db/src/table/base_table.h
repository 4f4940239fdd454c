// A table of the schema, and its file.
#pragma once

#include "edit/file_editor.h"
#include "edit/key_index.h"
#include "edit/record_change.h"
#include "edit/record_rules.h"
#include "schema/schema.h"
#include "table/record_file.h"
#include "table/record_table.h"

#include <functional>

namespace orvane {

class BaseTable : public RecordTable
{
public:
    // `places` are the paths where the file may be, in order of search. The relation, which is one of the
    // schema's, and the storage have to outlive the table.
    BaseTable(const Relation &relation, const Schema &schema, Storage &storage,
              std::vector<LocatedPath> places, bool writable, FilePolicy policy = {});

    const std::string &name() const override { return relation_.name; }
    bool is_view() const override { return false; }
    const std::vector<const Relation *> &members() const override { return members_; }
    const std::vector<TableField> &fields() const override { return fields_; }
    int field_index(std::string_view field_name, int standing_on) const override;
    std::int64_t record_size() const override { return relation_.record_size(); }

    RecordCount count_records() override;
    std::int64_t numbering() override;
    std::int64_t version() override;
    Result<std::string_view> record(std::int64_t number) override;
    void read_ahead_records(std::span<const std::int64_t> numbers) override { file_.read_ahead(numbers); }
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

    // ---- Changing ----

    Status put(std::int64_t number, std::size_t field, const FieldValue &value, Work &work) override;
    Status put_as_of(std::uint64_t generation, std::int64_t number, std::size_t field,
                     const FieldValue &value, Work &work) override;
    Status put_scratch(std::size_t field, const FieldValue &value) override;
    Status check_put(std::int64_t number, std::size_t field, const FieldValue &value) override;
    Status mark(std::int64_t number, Work &work) override;
    // Many records are changed a window of neighbouring ones at a time. The lock is let go of now and then.
    Status put_many(std::span<const RecordRun> records, std::size_t field, const FieldValue &value,
                    Work &work, std::int64_t &done) override;
    Status put_many_as_of(std::uint64_t generation, std::span<const RecordRun> records, std::size_t field,
                          const FieldValue &value, Work &work, std::int64_t &done) override;
    Status mark_many(std::span<const RecordRun> records, Work &work, std::int64_t &done) override;

    // Where records hold the texts on one side of a change that was told, those of the other side are put.
    // What timestamps say does not count; they are set anew, except in a record that becomes one of nulls.
    // `left` counts the records that hold something else by now, and are left alone.
    enum class Direction { Back, Again };
    Status exchange(const RecordChange &change, Direction direction, Work &work, std::int64_t &left);
    // Appends a record and answers its number.
    Result<std::int64_t> add(std::string_view record_text, Work &work);
    // Answers the number of the first record with the same primary key, or appends one.
    Result<std::int64_t> add_checked(std::string_view record_text, Work &work);
    // In the record whose field `key` has the value, which is added if there is none, sets the field `number`
    // to one more than it is and than `at_least`, and answers that.
    Result<std::int64_t> count_up(std::size_t key, const FieldValue &value, std::size_t number,
                                  std::int64_t at_least, Work &work);

    struct Crunched {
        std::uint64_t generation = 0; // of the record numbers before
        std::int64_t records = 0;     // before
        std::vector<std::int64_t> gone;
        Status forced; // a failure: it is done, but a machine that stops may undo it
    };
    // Removes the marked records. `renumber` is called while nobody else can change the table.
    Status crunch(Work &work, const std::function<void(const Crunched &)> &renumber);

    // Takes out of the file what is no record, as FileEditor::mend has it, and takes back a change that was
    // left half done. Answers also when there was nothing to do.
    Result<FileEditor::Mended> mend(Work &work);

    const Relation &relation() const { return relation_; }
    FilePolicy policy() const { return policy_; }

private:
    // The new text of a record for the one that it has.
    using Edit = std::function<Result<std::string>(const std::string &before)>;
    // `field`: whose value is put; -1: the record is marked.
    Status change(std::uint64_t generation, std::int64_t number, int field, Work &work, const Edit &edit);
    Status stale(std::int64_t number) const;
    void tell_change(std::int64_t number, int field, std::string_view before, std::string_view after,
                     const Work &work) const;

    struct BulkEdit; // base_table_bulk.cpp
    struct BulkPut;
    struct BulkMark;
    struct BulkExchange;
    struct BulkWindow;
    Status change_many(std::uint64_t generation, std::span<const RecordRun> records, BulkEdit &edit,
                       Work &work, std::int64_t &done);
    Status change_window(FileEditor &editor, const BulkWindow &window, BulkEdit &edit, Work &work,
                         std::int64_t &done);
    void follow_window(FileVersion version_before, const BulkWindow &window, std::string_view after);
    Status check_writable() const;
    Status of_file(const Status &failure, std::string_view what) const;
    enum class Unless { Nothing, KeyIsThere };
    Result<std::int64_t> add_record(std::string_view record_text, Unless unless, Work &work);
    Result<std::int64_t> append(FileEditor &editor, std::string record, const Work *told = nullptr);
    Status overwrite(FileEditor &editor, std::int64_t number, const std::string &before,
                     const std::string &after, Work &work);
    void put_into_index(std::int64_t number, std::string_view record);
    Status update_index(FileEditor &editor, Work &work);
    Result<std::int64_t> find_key(FileEditor &editor, std::string_view key);
    void follow(FileVersion version_before, std::int64_t number, std::string_view after);

    Result<std::vector<std::shared_ptr<Column>>> decode(const std::vector<RelationField> &fields,
                                                        const Snapshot &as_of, Work &work) const;

    const Relation &relation_;
    Storage &storage_;
    const bool opened_for_writing_;
    const FilePolicy policy_;
    const std::vector<const Relation *> members_;
    std::vector<TableField> fields_;
    std::string scratch_;
    RecordFile file_;
    FileEditor editor_;
    RecordRules rules_;
    KeyIndex index_;
};

} // namespace orvane
