// A table that has records of its own, by number: what views are made of.
#pragma once

#include "column/column.h"
#include "storage/file_system.h"
#include "table/table.h"
#include "work/snapshots.h"
#include "work/work.h"

#include <span>
#include <vector>

namespace orvane {

class RecordTable : public Table
{
public:
    // Looks at the file anew. An operation asks its Snapshots instead.
    virtual Snapshot snapshot() = 0;
    // Whether decoded fields are kept already, or could be without driving out all others.
    virtual bool has_room_for(std::span<const int>, const Snapshot &) const { return true; }
    // Whether `open_records` has a file to open: records of views are none.
    virtual bool has_record_file() const { return false; }
    // Opens the records for reading them beside what else goes on. As for `columns`, a table that is no
    // longer as it was is a failure and a change.
    virtual Result<std::unique_ptr<RandomAccessFile>> open_records(const Snapshot &, Work &work) const;
    // Records that will be asked for, by ascending numbers.
    virtual void read_ahead_records(std::span<const std::int64_t>) {}
    // Tells by a notice that so many fields held no value, unless it is 0.
    virtual void tell_unreadable(int, std::int64_t) const {}

    // Changes when record numbers that were noted no longer stand for the same records.
    virtual std::uint64_t generation() const { return 0; }
    // As Table::put, if record numbers still stand for what they did at that generation.
    virtual Status put_as_of(std::uint64_t generation, std::int64_t number, std::size_t field,
                             const FieldValue &value, Work &work);
    virtual Status put_many_as_of(std::uint64_t generation, std::span<const RecordRun> records,
                                  std::size_t field, const FieldValue &value, Work &work, std::int64_t &done);
    // Decoded fields of all records, in the order asked for. When the table is no longer as it was at the
    // snapshot it is a failure, and a change that the work met.
    virtual Result<std::vector<ColumnPtr>> columns(std::span<const int> fields, const Snapshot &as_of,
                                                   Work &work) = 0;
};

} // namespace orvane
