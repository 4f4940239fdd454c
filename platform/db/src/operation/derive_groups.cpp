// Group and ungroup.
#include "operation/derive.h"

#include "base/concat.h"
#include "operation/field_list.h"
#include "operation/sort.h"

#include <algorithm>
#include <numeric>

namespace orvane {

namespace {

std::string joined_names(std::span<const std::string> names)
{
    std::string text;
    for (const std::string &name : names)
        text.append(" ").append(name);
    return text;
}

// The table in whose rows the bundles stand: the one that is grouped where its rows are in order and stay as
// they are, else a view that no list shows.
Result<std::shared_ptr<Table>> source_of_bundles(Derivation &derivation, const Operand &operand,
                                                 Groups &groups, std::span<const std::string> names)
{
    const Table &table = operand.table();
    if (groups.in_order && table.is_view())
        return operand.shared_table();
    std::string creation = table.creation();
    if (groups.in_order) {
        groups.rows.resize(static_cast<std::size_t>(operand.row_count()));
        std::iota(groups.rows.begin(), groups.rows.end(), RowNumber{0});
    } else {
        creation = creation_after(table, nullptr, concat("dbsort", joined_names(names)));
    }
    auto members = operand.choose(std::move(groups.rows), derivation.work());
    if (!members.ok())
        return members.status();
    auto view = std::make_shared<View>(table.name(), std::move(*members), std::move(creation));
    derivation.database().remember_view(view);
    return std::shared_ptr<Table>(std::move(view));
}

} // namespace

Result<std::int64_t> derive_group(Derivation &derivation, const std::shared_ptr<Table> &table,
                                  int standing_on, std::span<const std::string> names)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        const auto fields = named_fields(*table, standing_on, names);
        if (!fields.ok())
            return fields.status();
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        auto groups = group_rows(*operand, *fields, derivation.work());
        if (!groups.ok())
            return groups.status();
        auto source = source_of_bundles(derivation, *operand, *groups, names);
        if (!source.ok())
            return source;
        return std::shared_ptr<Table>(std::make_shared<GroupedView>(
            derivation.name_for(*table, nullptr, "group"), std::move(*source), *fields,
            std::move(groups->firsts),
            creation_after(*table, nullptr, concat("dbgroup", joined_names(names)))));
    });
}

namespace {

// The rows of the source, in order of the bundles, and beside each the row of the operand that its bundle is
// in.
struct Unbundled {
    RowNumbers source_rows;
    RowNumbers rows;
};

Result<Unbundled> unbundled(const Operand &operand, std::size_t grouped_member, const GroupedView &grouped,
                            Work &work)
{
    const RowNumber *records = operand.members()[grouped_member].rows;
    const RowNumbers &firsts = grouped.firsts();
    const auto count = static_cast<std::size_t>(operand.row_count());
    const auto bundle_at = [&](std::size_t row) {
        return records ? records[row] : static_cast<RowNumber>(row);
    };
    std::uint64_t total = 0;
    for (std::size_t row = 0; row < count; ++row)
        if (const RowNumber bundle = bundle_at(row); bundle != null_row)
            total += firsts[bundle + 1] - firsts[bundle];
    if (total >= static_cast<std::uint64_t>(max_view_rows))
        return Status(Code::Argument,
                      concat("the bundles have ", total, " rows; a view can have less than ", max_view_rows));
    if (Status fits =
            check_memory(16.0 * static_cast<double>(total), concat("the bundles have ", total, " rows"));
        !fits.ok())
        return fits;
    Unbundled out;
    out.source_rows.reserve(total);
    out.rows.reserve(total);
    for (std::size_t row = 0; row < count; ++row) {
        if (row % 4096 == 0)
            if (Status told = work.poll(); !told.ok())
                return told;
        const RowNumber bundle = bundle_at(row);
        for (RowNumber at = bundle == null_row ? 0 : firsts[bundle];
             bundle != null_row && at < firsts[bundle + 1]; ++at) {
            out.source_rows.push_back(at);
            out.rows.push_back(static_cast<RowNumber>(row));
        }
    }
    return out;
}

// The operand's members with the grouped one replaced by those that it was grouped from.
Result<std::vector<ViewMember>> ungrouped(const Operand &operand, std::size_t grouped_member,
                                          const Operand &source, Unbundled rows, Work &work)
{
    auto inner = source.choose(std::move(rows.source_rows), work);
    if (!inner.ok())
        return inner;
    auto outer = operand.choose(std::move(rows.rows), work);
    if (!outer.ok())
        return outer;
    std::vector<ViewMember> members;
    for (std::size_t m = 0; m < outer->size(); ++m) {
        if (m != grouped_member)
            members.push_back(std::move((*outer)[m]));
        else
            std::move(inner->begin(), inner->end(), std::back_inserter(members));
    }
    for (std::size_t a = 0; a < members.size(); ++a)
        for (std::size_t b = a + 1; b < members.size(); ++b)
            if (members[a].table == members[b].table)
                return Status(Code::Argument, concat("table ", members[a].table->name(),
                                                     " would be a member of the view twice; sever it first"));
    return members;
}

} // namespace

Result<std::int64_t> derive_ungroup(Derivation &derivation, const std::shared_ptr<Table> &table)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        std::size_t member = 0;
        std::shared_ptr<GroupedView> grouped;
        for (std::size_t m = 0; m < operand->members().size() && !grouped; ++m) {
            grouped = std::dynamic_pointer_cast<GroupedView>(operand->members()[m].table);
            member = m;
        }
        if (!grouped)
            return Status(Code::Argument, concat(table->is_view() ? "view " : "table ", table->name(),
                                                 " is not grouped: it has no bundles"));
        auto source = derivation.operand(grouped->source());
        if (!source.ok())
            return source.status();
        auto rows = unbundled(*operand, member, *grouped, derivation.work());
        if (!rows.ok())
            return rows.status();
        auto members = ungrouped(*operand, member, *source, std::move(*rows), derivation.work());
        if (!members.ok())
            return members.status();
        const std::string creation = creation_after(*table, nullptr, "dbungroup");
        return std::shared_ptr<Table>(std::make_shared<View>(
            derivation.name_for(*grouped->source(), nullptr, "ungroup"), std::move(*members), creation));
    });
}

} // namespace orvane
