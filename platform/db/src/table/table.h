// A table as pointers see it: fields in order and numbered records. Base tables read a file; views
// (columns of record numbers) read the base tables that they are made of.
#pragma once

#include "base/status.h"
#include "schema/relation.h"
#include "table/field_value.h"
#include "table/record_moves.h"
#include "table/record_run.h"
#include "work/work.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

struct TableField {
    const Attribute *attribute; // owned by the schema
    const Relation *relation;   // of the base table that the field comes from
    std::int64_t offset;        // the field's first byte in the record's text
};

// What a table knows of its records at one moment.
struct RecordCount {
    std::int64_t records = 0;
    Status refusal; // why a table that has a file looks as if it had no records
};

// The special records of a table, besides numbered ones.
enum class SpecialRecord { Null, Scratch };

class Table;

// The rows that a bundle stands for: [first, end) of a table.
struct Bundle {
    std::shared_ptr<Table> table;
    std::int64_t first = 0;
    std::int64_t end = 0;
};

class Table
{
public:
    virtual ~Table() = default;

    virtual const std::string &name() const = 0;
    virtual bool is_view() const = 0;
    // The relations that the table is made of: one for a base table.
    virtual const std::vector<const Relation *> &members() const = 0;
    virtual const std::vector<TableField> &fields() const = 0;
    // The place of a field named "lat" or "origin.lat", or -1. `standing_on` is the field that a pointer
    // stands on (-1: none), which keeps a bare name where several members have it.
    virtual int field_index(std::string_view field_name, int standing_on) const = 0;
    // Bytes of a record, the line feed included.
    virtual std::int64_t record_size() const = 0;

    // Looks at the file anew.
    virtual RecordCount count_records() = 0;
    // Looks at the files anew, too. Changes when records have other numbers; and when another program may
    // have changed records.
    virtual std::int64_t numbering() = 0;
    virtual std::int64_t version() = 0;
    // How records were numbered anew when this program crunched the last time.
    const RecordMoves &last_moves() const { return last_moves_; }
    // The text of a record without its line feed, valid until the next call of a member of any table of
    // the database.
    virtual Result<std::string_view> record(std::int64_t number) = 0;
    virtual std::string_view special_record(SpecialRecord which) const = 0;
    // The text of one field of a record, under the same terms. `field` is one of the table's.
    virtual Result<std::string_view> cell(std::int64_t number, std::size_t field);
    // The rows [first, end) will be asked for; where they are scattered it costs less to read them now.
    virtual void read_ahead(std::int64_t first, std::int64_t end);
    // The rows that a field of a record stands for, when it is a bundle.
    virtual std::optional<Bundle> bundle(std::int64_t number, std::size_t field) const;
    // Fills the scratch record; the text is a whole record without its line feed. Base tables only.
    virtual Status set_scratch(std::string_view record_text) = 0;

    // ---- Changing: what a table can't do is a failure that says so ----

    // Puts a value into a field of a record; into one of the scratch record.
    virtual Status put(std::int64_t number, std::size_t field, const FieldValue &value, Work &work);
    virtual Status put_scratch(std::size_t field, const FieldValue &value);
    // Whether put() would take the value now. Changes nothing and takes no lock.
    virtual Status check_put(std::int64_t number, std::size_t field, const FieldValue &value);
    // Makes a record of a base table one of nothing but nulls; flags a row of a view.
    virtual Status mark(std::int64_t number, Work &work);
    // The same for many records or rows, given by ascending runs. What was done before a failure, or before
    // the work was cancelled, stays; `done` counts it, in records that were changed or rows that were
    // flagged.
    virtual Status put_many(std::span<const RecordRun> rows, std::size_t field, const FieldValue &value,
                            Work &work, std::int64_t &done);
    virtual Status mark_many(std::span<const RecordRun> rows, Work &work, std::int64_t &done);

    // Whether the table has a file; a view is always present. A failure says why that can't be told.
    virtual Result<bool> is_present() = 0;
    // What only a file has; of a view, empty. A table without a file answers the one it would get.
    virtual std::string file_name() = 0;
    virtual std::string folder_name() = 0;
    // Whether records can be changed or added.
    virtual bool is_writable() = 0;
    // One line per operation that made it, oldest first.
    virtual std::string creation() const = 0;
    virtual std::string description() const = 0;
    virtual std::string detail() const = 0;

protected:
    RecordMoves last_moves_;
};

} // namespace orvane
