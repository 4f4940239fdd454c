// What an operation works on: a table or view at one moment, its rows and its decoded fields.
#pragma once

#include "view/view.h"
#include "work/work.h"

#include <memory>
#include <span>
#include <vector>

namespace orvane {

// A decoded field as the rows of an operand see it.
struct RowColumn {
    const Column *column = nullptr;
    const RowNumber *rows = nullptr; // record numbers per row; null: row n has record n
    bool has_nulls = false;          // among the rows

    // Where a row's value stands in the column: behind the last record for the null record.
    std::size_t at(std::size_t row) const
    {
        const std::size_t record = rows ? rows[row] : row;
        const auto count = static_cast<std::size_t>(column->count);
        return record < count ? record : count;
    }
    // Copies the values of so many chosen rows into a column of that many records, with the texts.
    void gather(const RowNumber *chosen, Column &out) const;
};

class Operand
{
public:
    struct Member {
        std::shared_ptr<RecordTable> table;
        const RowNumber *rows = nullptr; // null: row n is record n
        bool has_null_rows = false;
        Snapshot snapshot;
        std::vector<ColumnPtr> columns; // by field; null where it isn't loaded
    };

    explicit Operand(std::shared_ptr<Table> table);

    Table &table() const { return *table_; }
    const std::shared_ptr<Table> &shared_table() const { return table_; }
    std::int64_t row_count() const { return row_count_; }
    const std::vector<Member> &members() const { return members_; }

    // Looks at the member tables, unless the operation did before. Fails where records that rows stand for
    // are gone, or a table has too many records. The rows counted now are those of the operation.
    Status look(Snapshots &snapshots);
    // Decodes fields; `look` goes before where it wasn't called yet.
    Status load(std::span<const int> fields, Work &work);
    // A field that was loaded. Lives as long as the operand.
    RowColumn column(int field) const;
    View::FieldPlace place_of(int field) const { return places_[static_cast<std::size_t>(field)]; }

    // The members of a view of the chosen rows; null_row chooses the null records.
    Result<std::vector<ViewMember>> choose(RowNumbers chosen, Work &work) const;

    // Why tables look as if they had no records.
    std::vector<Status> remarks() const;

private:
    std::shared_ptr<Table> table_;
    std::shared_ptr<const View> view_; // null where the operand is a table of records
    std::vector<Member> members_;
    std::vector<View::FieldPlace> places_;
    std::int64_t row_count_ = 0;
    bool looked_ = false;
};

// A failure where so many bytes are more than the machine has left; `what` begins the message: "the join has
// …".
Status check_memory(double bytes, const std::string &what);

} // namespace orvane
