#include "operation/row_reader.h"

#include "base/concat.h"
#include "column/column_decoder.h"

#include <algorithm>
#include <cstring>

namespace orvane {

namespace {

// Rows in the order of their records are read in batches that stay in the processor's cache. Where they are
// in another order, more of them at a time lie closer together in the file.
constexpr std::size_t batch_bytes = 4 << 20;
constexpr std::size_t disordered_batch_bytes = 32 << 20;
constexpr std::size_t max_batch_rows = 1 << 20;
constexpr std::int64_t entries_per_block = 8 << 10; // of a batch, for one thread
// Records that lie no further apart than this are read at once with what lies between them: that costs less
// than another system call.
constexpr std::int64_t max_gap_bytes = 4 << 10;
constexpr std::int64_t max_run_bytes = 256 << 10;

std::int64_t number_of(std::uint64_t entry)
{
    return static_cast<std::int64_t>(entry >> 32);
}
std::size_t row_of(std::uint64_t entry)
{
    return entry & 0xffff'ffff;
}

void put_record(std::string_view record, char *place, std::size_t size)
{
    std::memcpy(place, record.data(), std::min(record.size(), size - 1));
    place[size - 1] = '\n';
}

} // namespace

RowReader::RowReader(const Operand &operand, std::vector<bool> wanted, Work &work)
    : operand_(operand), work_(work), runs_(thread_limit())
{
    bool disordered = false;
    for (std::size_t i = 0; i < operand.members().size(); ++i) {
        RecordTable &table = *operand.members()[i].table;
        Member &member = members_.emplace_back();
        member.wanted = wanted[i];
        member.record_size = static_cast<std::size_t>(table.record_size());
        row_bytes_ += member.wanted ? member.record_size : 0;
        disordered = disordered || (member.wanted && operand.members()[i].rows);
    }
    const std::size_t bytes = disordered ? disordered_batch_bytes : batch_bytes;
    most_ = static_cast<std::int64_t>(
        std::clamp<std::size_t>(bytes / std::max<std::size_t>(row_bytes_, 1), 1, max_batch_rows));
}

Status RowReader::open()
{
    for (std::size_t i = 0; i < members_.size(); ++i) {
        const Operand::Member &from = operand_.members()[i];
        if (!members_[i].wanted || !from.table->has_record_file() || from.snapshot.records == 0)
            continue;
        auto file = from.table->open_records(from.snapshot, work_);
        if (!file.ok())
            return file.status();
        members_[i].file = std::move(*file);
        members_[i].shown = from.table->file_name(); // looks at the file, so not before it is open
    }
    return Status();
}

bool RowReader::is_for_any_thread() const
{
    for (std::size_t i = 0; i < members_.size(); ++i)
        if (members_[i].wanted && (operand_.members()[i].rows || !members_[i].file))
            return false;
    return true;
}

Status RowReader::read(std::int64_t begin, std::int64_t end, RowRecords &into)
{
    into.members_.resize(members_.size());
    for (std::size_t i = 0; i < members_.size(); ++i)
        if (members_[i].wanted)
            if (Status read = read_member(i, begin, end, into.members_[i]); !read.ok())
                return read;
    return Status();
}

Status RowReader::read_member(std::size_t index, std::int64_t begin, std::int64_t end, Records &into)
{
    const Member &member = members_[index];
    const Operand::Member &from = operand_.members()[index];
    const auto count = static_cast<std::size_t>(end - begin);
    const std::size_t size = into.record_size = member.record_size;
    if (from.rows)
        return read_chosen(index, from.rows + begin, count, into);
    if (member.file)
        return read_run(member, begin, end, into.bytes);
    into.bytes.resize(count * size);
    for (std::size_t row = 0; row < count; ++row) {
        const auto record = from.table->record(begin + static_cast<std::int64_t>(row));
        if (!record.ok())
            return record.status();
        put_record(*record, &into.bytes[row * size], size);
    }
    return Status();
}

// The records in the order of their numbers, so that neighbours are read together and the disk is read
// forwards.
Status RowReader::read_chosen(std::size_t index, const RowNumber *rows, std::size_t count, Records &into)
{
    const Member &member = members_[index];
    const std::size_t size = member.record_size;
    RecordTable &table = *operand_.members()[index].table;
    into.bytes.resize(count * size);
    order_.clear();
    for (std::size_t row = 0; row < count; ++row) {
        if (rows[row] == null_row)
            put_record(table.special_record(SpecialRecord::Null), &into.bytes[row * size], size);
        else
            order_.push_back(std::uint64_t{rows[row]} << 32 | row);
    }
    if (!std::is_sorted(order_.begin(), order_.end()))
        std::sort(order_.begin(), order_.end());
    if (member.file)
        return work_.for_blocks(static_cast<std::int64_t>(order_.size()), entries_per_block, 0,
                                [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                                    return read_entries(member, static_cast<std::size_t>(begin),
                                                        static_cast<std::size_t>(end), runs_[thread], into);
                                });
    for (const std::uint64_t entry : order_) {
        const auto record = table.record(number_of(entry));
        if (!record.ok())
            return record.status();
        put_record(*record, &into.bytes[row_of(entry) * size], size);
    }
    return Status();
}

// Neighbours are read together.
Status RowReader::read_entries(const Member &member, std::size_t from, std::size_t end,
                               std::vector<char> &run, Records &into) const
{
    const auto size = static_cast<std::int64_t>(member.record_size);
    while (from < end) {
        const std::int64_t first = number_of(order_[from]);
        std::size_t to = from + 1;
        while (to < end && (number_of(order_[to]) - number_of(order_[to - 1]) - 1) * size <= max_gap_bytes &&
               (number_of(order_[to]) - first + 1) * size <= max_run_bytes)
            ++to;
        if (Status read = read_run(member, first, number_of(order_[to - 1]) + 1, run); !read.ok())
            return read;
        for (; from < to; ++from)
            std::memcpy(into.bytes.data() + row_of(order_[from]) * member.record_size,
                        run.data() + (number_of(order_[from]) - first) * size, member.record_size);
    }
    return Status();
}

Status RowReader::read_run(const Member &member, std::int64_t first, std::int64_t end,
                           std::vector<char> &into) const
{
    const RecordSpan span{*member.file, end, static_cast<std::int64_t>(member.record_size), member.shown};
    const auto read = read_records(span, first, end, into);
    if (!read.ok())
        return read.status();
    if (!*read)
        return Status(Code::NotFound, concat(member.shown, ": became shorter while it was read"));
    return Status();
}

} // namespace orvane
