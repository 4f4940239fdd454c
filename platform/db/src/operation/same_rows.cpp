#include "operation/same_rows.h"

#include "base/concat.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace orvane {

namespace {

using Members = std::vector<const Operand::Member *>;

RowNumber record_at(const Operand::Member &member, std::int64_t row)
{
    return member.rows ? member.rows[row] : static_cast<RowNumber>(row);
}

// The members of `to` in the order in which `from` has the same tables; nothing where they differ.
std::optional<Members> members_like(const Operand &from, const Operand &to)
{
    Members members;
    for (const Operand::Member &wanted : from.members())
        for (const Operand::Member &member : to.members())
            if (member.table == wanted.table)
                members.push_back(&member);
    if (members.size() != from.members().size() || members.size() != to.members().size())
        return std::nullopt;
    return members;
}

// The records of the rows looked for, and which rows they are.
class Wanted
{
public:
    Wanted(const Operand &from, std::span<const std::int64_t> rows)
    {
        for (const Operand::Member &member : from.members())
            members_.push_back(&member);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const std::int64_t row = rows[i];
            if (row >= 0 && row < from.row_count())
                entries_.push_back({record_at(*members_.front(), row), row, i});
        }
        std::sort(entries_.begin(), entries_.end(),
                  [this](const Entry &a, const Entry &b) { return order(a, members_, b.row, b.first) < 0; });
        for (const Entry &entry : entries_)
            mark(entry.first);
    }

    // Calls found(i) for each of the rows looked for that has the records of this row of the other table.
    template <typename Found>
    void each_like(const Members &others, std::int64_t row, Found found) const
    {
        const RowNumber first = record_at(*others.front(), row);
        if (!is_marked(first))
            return;
        auto entry = std::partition_point(entries_.begin(), entries_.end(), [&](const Entry &candidate) {
            return order(candidate, others, row, first) < 0;
        });
        for (; entry != entries_.end() && order(*entry, others, row, first) == 0; ++entry)
            found(entry->place);
    }

private:
    struct Entry {
        RowNumber first; // the record of the first member
        std::int64_t row;
        std::size_t place;
    };

    // How the records of an entry stand to those of a row of `others`.
    int order(const Entry &entry, const Members &others, std::int64_t row, RowNumber first) const
    {
        if (entry.first != first)
            return entry.first < first ? -1 : 1;
        for (std::size_t i = 1; i < members_.size(); ++i) {
            const RowNumber a = record_at(*members_[i], entry.row);
            const RowNumber b = record_at(*others[i], row);
            if (a != b)
                return a < b ? -1 : 1;
        }
        return 0;
    }

    // Most rows of a large table are told apart by one bit of their first record. The null record, beyond all
    // others, has no bit of its own.
    void mark(RowNumber record)
    {
        if (record == null_row) {
            null_marked_ = true;
            return;
        }
        if (record >= marks_.size())
            marks_.resize(std::size_t{record} + 1);
        marks_[record] = true;
    }
    bool is_marked(RowNumber record) const
    {
        return record == null_row ? null_marked_ : record < marks_.size() && marks_[record];
    }

    Members members_;
    std::vector<Entry> entries_;
    std::vector<bool> marks_;
    bool null_marked_ = false;
};

} // namespace

Result<std::vector<std::int64_t>> same_rows(const Operand &from, const Operand &to,
                                            std::span<const std::int64_t> rows)
{
    const std::optional<Members> others = members_like(from, to);
    if (!others)
        return Status(Code::Argument, concat(from.table().name(), " and ", to.table().name(),
                                             " are not made of the same tables"));
    std::vector<std::int64_t> places(rows.size(), -1);
    const Wanted wanted(from, rows);
    for (std::int64_t row = 0; row < to.row_count(); ++row)
        wanted.each_like(*others, row, [&](std::size_t i) {
            if (places[i] < 0)
                places[i] = row;
        });
    return places;
}

} // namespace orvane
