// A view: columns of record numbers, one per member table, never copies of records.
#pragma once

#include "table/record_table.h"
#include "view/delayed_rows.h"
#include "work/buffer.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvane {

// The number of a record or row inside views and operations. Four bytes hold more than four thousand million,
// and half as much memory is half as much time; a larger table is refused where a view is to be made of it.
using RowNumber = std::uint32_t;
constexpr RowNumber null_row =
    ~RowNumber{0}; // the null record, beside which an outer join puts what has no match
constexpr std::int64_t max_view_rows = null_row;

using RowNumbers = Buffer<RowNumber>;

// One member of a view: a table, and for each row of the view the number of one of its records.
struct ViewMember {
    std::shared_ptr<RecordTable> table;
    RowNumbers rows;
    RowNumber end = 0; // one beyond the highest record number
    bool has_null_rows = false;
    std::uint64_t generation = 0; // of the table, for which the record numbers hold
};

// What is to be known of rows of a member.
struct RowBounds {
    RowNumber end = 0;
    bool has_null_rows = false;

    void add(RowNumber row)
    {
        has_null_rows |= row == null_row;
        end = std::max(end, row + 1); // that of the null record is 0
    }
    void add(const RowBounds &other)
    {
        has_null_rows |= other.has_null_rows;
        end = std::max(end, other.end);
    }
};

// A member with what is said of its rows found out.
ViewMember view_member(std::shared_ptr<RecordTable> table, RowNumbers rows, std::uint64_t generation);

// The failure of rows whose record numbers hold no longer.
Status outdated(const std::string &view_name, const RecordTable &member);

class View : public Table
{
public:
    // The members have equally many rows. `creation` is one line per operation, oldest first.
    View(std::string name, std::vector<ViewMember> members, std::string creation);

    const std::string &name() const override { return name_; }
    bool is_view() const override { return true; }
    const std::vector<const Relation *> &members() const override { return relations_; }
    const std::vector<TableField> &fields() const override { return fields_; }
    int field_index(std::string_view field_name, int standing_on) const override;
    std::int64_t record_size() const override { return record_size_; }

    RecordCount count_records() override
    {
        const std::int64_t rows = row_count();
        return RecordCount{rows, refusal_};
    }
    // Of the rows; and whether they can be read at all.
    std::int64_t numbering() override;
    std::int64_t version() override;
    Result<std::string_view> record(std::int64_t number) override;
    std::string_view special_record(SpecialRecord which) const override;
    Status set_scratch(std::string_view record_text) override;
    Result<std::string_view> cell(std::int64_t number, std::size_t field) override;
    void read_ahead(std::int64_t first, std::int64_t end) override;
    std::optional<Bundle> bundle(std::int64_t number, std::size_t field) const override;

    // Writes the base record. A null record beside which an outer join put a row is none.
    Status put(std::int64_t number, std::size_t field, const FieldValue &value, Work &work) override;
    // Rows without a record of the field's table are left out, and told at the end as a failure.
    Status put_many(std::span<const RecordRun> rows, std::size_t field, const FieldValue &value, Work &work,
                    std::int64_t &done) override;
    Status put_scratch(std::size_t field, const FieldValue &value) override;
    Status check_put(std::int64_t number, std::size_t field, const FieldValue &value) override;
    // Flags the row: it stays until the view is crunched.
    Status mark(std::int64_t number, Work &work) override;
    Status mark_many(std::span<const RecordRun> rows, Work &work, std::int64_t &done) override;
    // Removes the flagged rows. Answers as `renumber`; nothing when no row is flagged.
    std::vector<RowNumber> crunch();

    Result<bool> is_present() override { return true; }
    std::string file_name() override { return {}; }
    std::string folder_name() override { return {}; }
    bool is_writable() override;
    std::string creation() const override { return creation_; }
    std::string description() const override;
    std::string detail() const override { return creation_; }

    std::int64_t row_count() const
    {
        want_rows();
        return static_cast<std::int64_t>(member_tables_.front().rows.size());
    }
    const std::vector<ViewMember> &member_tables() const
    {
        want_rows();
        return member_tables_;
    }
    // Why the view looks as if it had no rows.
    const Status &refusal() const
    {
        want_rows();
        return refusal_;
    }

    // Leaves the rows to be asked for. The members of such a view are made without rows.
    void wait_for(std::shared_ptr<DelayedRows> rows) { delayed_ = std::move(rows); }
    const std::shared_ptr<DelayedRows> &delayed_rows() const { return delayed_; }
    // The rows that the view waits for, a column for each member, and the generations of these; or why there
    // are none.
    void take_rows(std::vector<RowNumbers> columns, std::span<const std::uint64_t> generations);
    void refuse(Status why);

    // Which member a field is of, and which of its fields it is.
    struct FieldPlace {
        int member;
        int field;
    };
    const std::vector<FieldPlace> &field_places() const { return places_; }

    // The records of a member were numbered anew: `renumbered` has the new number of each old one, null_row
    // for those that are gone. Rows with a record that is gone go. Answers for each old row its new number,
    // null_row for those that went; nothing when the table is no member, or when the view's numbers were not
    // those of `generation`, so that nothing is known of its rows.
    std::vector<RowNumber> renumber(const RecordTable &table, std::uint64_t generation,
                                    std::span<const RowNumber> renumbered);

private:
    // What `read` reads of a member's table, if its records are those of the view's numbers.
    template <typename Read>
    Result<std::string_view> read_member(const ViewMember &member, Read read) const;
    // Leaves the rows that have a new number.
    void move_rows(const std::vector<RowNumber> &moved);
    Result<RowNumber> record_of(const ViewMember &member, std::int64_t row) const;
    Result<RowNumber> changeable_record(const ViewMember &member, std::int64_t row) const;
    void add_fields_of(int member);
    RecordTable *table_of_scratch() const;
    void want_rows() const
    {
        if (delayed_)
            fetch_rows();
    }
    void fetch_rows() const;

    std::string name_;
    std::vector<ViewMember> member_tables_;
    std::string creation_;
    std::vector<const Relation *> relations_;
    std::vector<TableField> fields_;
    std::vector<FieldPlace> places_;
    std::int64_t record_size_ = 0;
    std::string null_record_;
    std::vector<bool> flagged_;   // rows; empty: none
    std::string assembled_;       // the record asked for last
    std::int64_t moved_rows_ = 0; // how often
    mutable std::shared_ptr<DelayedRows> delayed_;
    Status refusal_;
};

// The field that a name means: "site.lat" exactly; a bare name the field that the pointer stands on where it
// is of that name, else the first; the view's own name before a field is as no name. -1 where there is none.
int find_view_field(const std::vector<TableField> &fields, std::string_view own_name,
                    std::string_view field_name, int standing_on);

} // namespace orvane
