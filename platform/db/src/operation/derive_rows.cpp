// Subset, sort, sever and separate: rows of one table chosen.
#include "operation/derive.h"

#include "base/concat.h"
#include "base/near_names.h"
#include "operation/distinct.h"
#include "operation/field_list.h"
#include "operation/sort.h"
#include "operation/subset.h"

namespace orvane {

namespace {

Result<std::shared_ptr<Table>> view_of(Derivation &derivation, const Operand &operand, RowNumbers rows,
                                       std::string_view operation, std::string_view creation_line)
{
    auto members = operand.choose(std::move(rows), derivation.work());
    if (!members.ok())
        return members.status();
    const Table &table = operand.table();
    return std::shared_ptr<Table>(std::make_shared<View>(derivation.name_for(table, nullptr, operation),
                                                         std::move(*members),
                                                         creation_after(table, nullptr, creation_line)));
}

std::string joined_names(std::span<const std::string> names)
{
    std::string text;
    for (const std::string &name : names)
        text.append(" ").append(name);
    return text;
}

// The place of a member among those of the operand's table.
Result<std::size_t> member_named(const Operand &operand, std::string_view name)
{
    std::vector<std::string_view> known;
    for (const Operand::Member &member : operand.members()) {
        if (member.table->name() == name)
            return known.size();
        known.push_back(member.table->name());
    }
    return Status(Code::NotFound,
                  concat("no table '", name, "' in ", operand.table().is_view() ? "view " : "table ",
                         operand.table().name(), ", which is made of ", joined(known)));
}

} // namespace

Result<std::int64_t> derive_subset(Derivation &derivation, const std::shared_ptr<Table> &table,
                                   int standing_on, std::string_view expression)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        const auto condition = bind_condition(*table, standing_on, expression);
        if (!condition.ok())
            return condition.status();
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        auto rows = subset_rows(*operand, *condition, derivation.work());
        if (!rows.ok())
            return rows.status();
        return view_of(derivation, *operand, std::move(*rows), "subset", concat("dbsubset ", expression));
    });
}

Result<std::int64_t> derive_sort(Derivation &derivation, const std::shared_ptr<Table> &table, int standing_on,
                                 std::span<const std::string> names, SortFlags flags)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        auto fields = named_fields(*table, standing_on, names);
        if (!fields.ok())
            return fields.status();
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        auto rows = sort_rows(*operand, SortOrder{std::move(*fields), flags.reverse, flags.unique},
                              derivation.work());
        if (!rows.ok())
            return rows.status();
        return view_of(derivation, *operand, std::move(*rows), "sort",
                       concat("dbsort", flags.reverse ? " -reverse" : "", flags.unique ? " -unique" : "",
                              joined_names(names)));
    });
}

Result<std::int64_t> derive_sever(Derivation &derivation, const std::shared_ptr<Table> &table,
                                  std::string_view member)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        const auto dropped = member_named(*operand, member);
        if (!dropped.ok())
            return dropped.status();
        if (operand->members().size() == 1)
            return Status(Code::Argument, concat("nothing would be left of ", table->name(),
                                                 ", which is made of ", member, " alone"));
        auto members = severed(*operand, *dropped, derivation.work());
        if (!members.ok())
            return members.status();
        return std::shared_ptr<Table>(
            std::make_shared<View>(derivation.name_for(*table, nullptr, "sever"), std::move(*members),
                                   creation_after(*table, nullptr, concat("dbsever ", member))));
    });
}

Result<std::int64_t> derive_separate(Derivation &derivation, const std::shared_ptr<Table> &table,
                                     std::string_view member)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        auto operand = derivation.operand(table);
        if (!operand.ok())
            return operand.status();
        const auto kept = member_named(*operand, member);
        if (!kept.ok())
            return kept.status();
        auto members = separated(*operand, *kept, derivation.work());
        if (!members.ok())
            return members.status();
        const Table &separate = *members->front().table;
        return std::shared_ptr<Table>(
            std::make_shared<View>(derivation.name_for(separate, nullptr, "separate"), std::move(*members),
                                   creation_after(*table, nullptr, concat("dbseparate ", member))));
    });
}

} // namespace orvane
