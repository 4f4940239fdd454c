#include "table/record_table.h"

#include "base/concat.h"

namespace orvane {

Result<std::string_view> Table::cell(std::int64_t number, std::size_t field)
{
    auto text = record(number);
    if (!text.ok())
        return text;
    const TableField &place = fields()[field];
    return text->substr(static_cast<std::size_t>(place.offset),
                        static_cast<std::size_t>(place.attribute->width));
}

namespace {

Status unchangeable(const Table &table)
{
    return Status(Code::Argument, concat(table.is_view() ? "view " : "table ", table.name(),
                                         ": its records cannot be changed"));
}

} // namespace

Status Table::put(std::int64_t, std::size_t, const FieldValue &, Work &)
{
    return unchangeable(*this);
}

Status Table::put_scratch(std::size_t, const FieldValue &)
{
    return Status(Code::Argument, concat("view ", name(), " has no scratch record of its own; tables have"));
}

Status Table::check_put(std::int64_t, std::size_t, const FieldValue &)
{
    return unchangeable(*this);
}

Status Table::mark(std::int64_t, Work &)
{
    return unchangeable(*this);
}

Status Table::put_many(std::span<const RecordRun>, std::size_t, const FieldValue &, Work &, std::int64_t &)
{
    return unchangeable(*this);
}

Status Table::mark_many(std::span<const RecordRun>, Work &, std::int64_t &)
{
    return unchangeable(*this);
}

Status RecordTable::put_many_as_of(std::uint64_t, std::span<const RecordRun>, std::size_t, const FieldValue &,
                                   Work &, std::int64_t &)
{
    return unchangeable(*this);
}

Status RecordTable::put_as_of(std::uint64_t, std::int64_t, std::size_t, const FieldValue &, Work &)
{
    return unchangeable(*this);
}

Result<std::unique_ptr<RandomAccessFile>> RecordTable::open_records(const Snapshot &, Work &) const
{
    return Status(Code::Argument, name() + " has no records in a file");
}

void Table::read_ahead(std::int64_t, std::int64_t) {}

std::optional<Bundle> Table::bundle(std::int64_t, std::size_t) const
{
    return std::nullopt;
}

} // namespace orvane
