#include "table/record_table.h"

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

Result<std::unique_ptr<RandomAccessFile>> RecordTable::open_records(const Snapshot &, Work &) const
{
    return Status(Code::Argument, name() + " has no records in a file");
}

std::optional<Bundle> Table::bundle(std::int64_t, std::size_t) const
{
    return std::nullopt;
}

} // namespace orvane
