#include "operation/distinct.h"

#include "operation/key_ids.h"

#include <algorithm>
#include <numeric>

namespace orvane {

namespace {

constexpr std::size_t rows_between_polls = 64 << 10;

std::size_t row_count(const Operand &operand)
{
    return static_cast<std::size_t>(operand.row_count());
}

ViewMember member_of_rows(const Operand::Member &member, const RowNumbers &chosen)
{
    RowNumbers rows(chosen.size());
    for (std::size_t i = 0; i < chosen.size(); ++i)
        rows[i] = member.rows ? member.rows[chosen[i]] : chosen[i];
    return view_member(member.table, std::move(rows), member.snapshot.generation);
}

// One number per row, equal for rows that are equal in the members; numbers of records to begin with, then of
// pairs of those numbers and of the next member's records.
Result<RowNumbers> row_ids(const Operand &operand, std::size_t dropped, Work &work)
{
    const std::size_t count = row_count(operand);
    RowNumbers ids;
    for (std::size_t m = 0; m < operand.members().size(); ++m) {
        if (m == dropped)
            continue;
        const RowNumber *rows = operand.members()[m].rows;
        if (ids.empty()) {
            ids.assign(rows, rows + count);
            continue;
        }
        PairIds pairs(count);
        for (std::size_t row = 0; row < count; ++row) {
            if (row % rows_between_polls == 0)
                if (Status told = work.poll(); !told.ok())
                    return told;
            ids[row] = pairs.id_of(ids[row], rows[row]);
        }
    }
    return ids;
}

} // namespace

Result<std::vector<ViewMember>> severed(const Operand &operand, std::size_t dropped, Work &work)
{
    auto ids = row_ids(operand, dropped, work);
    if (!ids.ok())
        return ids.status();
    // The null record has the highest number of all; it gets the one behind those that there are.
    RowNumber end = 0;
    for (const RowNumber id : *ids)
        end = id == null_row ? end : std::max(end, id + 1);
    std::vector<bool> met(std::size_t{end} + 1);
    RowNumbers first;
    for (std::size_t row = 0; row < ids->size(); ++row) {
        const std::size_t id = std::min((*ids)[row], end);
        if (!met[id])
            first.push_back(static_cast<RowNumber>(row));
        met[id] = true;
    }
    std::vector<ViewMember> members;
    for (std::size_t m = 0; m < operand.members().size(); ++m)
        if (m != dropped)
            members.push_back(member_of_rows(operand.members()[m], first));
    return members;
}

Result<std::vector<ViewMember>> separated(const Operand &operand, std::size_t kept, Work &work)
{
    const Operand::Member &member = operand.members()[kept];
    const std::size_t count = row_count(operand);
    RowNumbers rows;
    if (!member.rows) {
        rows.resize(count);
        std::iota(rows.begin(), rows.end(), RowNumber{0});
    } else {
        std::vector<bool> met(static_cast<std::size_t>(member.snapshot.records));
        for (std::size_t row = 0; row < count; ++row)
            if (member.rows[row] != null_row)
                met[member.rows[row]] = true;
        if (Status told = work.poll(); !told.ok())
            return told;
        for (std::size_t record = 0; record < met.size(); ++record)
            if (met[record])
                rows.push_back(static_cast<RowNumber>(record));
    }
    std::vector<ViewMember> members;
    members.push_back(view_member(member.table, std::move(rows), member.snapshot.generation));
    return members;
}

} // namespace orvane
