// What changes several tables of a database, or views besides a table.
#include "catalog/database.h"

#include "base/concat.h"

#include <algorithm>

namespace orvane {

namespace {

// New numbers for old ones, when those that are gone are left out.
std::vector<RowNumber> without(const std::vector<std::int64_t> &gone, std::int64_t records)
{
    std::vector<RowNumber> renumbered(static_cast<std::size_t>(std::min(records, max_view_rows)));
    auto next = gone.begin();
    RowNumber kept = 0;
    for (std::size_t number = 0; number < renumbered.size(); ++number) {
        const bool is_gone = next != gone.end() && *next == static_cast<std::int64_t>(number);
        if (is_gone)
            ++next;
        renumbered[number] = is_gone ? null_row : kept++;
    }
    return renumbered;
}

} // namespace

Status Database::crunch(Table &table, Work &work)
{
    if (auto *base = dynamic_cast<BaseTable *>(&table))
        return base->crunch(work, [&](const BaseTable::Crunched &crunched) {
            renumber(*base, crunched.generation, without(crunched.gone, crunched.records));
        });
    if (auto *view = dynamic_cast<View *>(&table)) {
        const std::vector<RowNumber> moved = view->crunch();
        if (!moved.empty())
            follow_rows(*view, moved);
        return Status();
    }
    return Status(Code::Argument, concat("view ", table.name(), ": its rows cannot be removed"));
}

// ---- Ids -----------------------------------------------------------------------------------------

Result<std::int64_t> Database::greatest_in_use(const Relation &relation, std::string_view id_field,
                                               Work &work)
{
    auto &table = static_cast<RecordTable &>(
        *tables_[static_cast<std::size_t>(schema_->relation_index(relation.name))]);
    const int fields[] = {relation.field_index(id_field)};
    constexpr int max_attempts = 4; // at a table that keeps changing while it is read
    for (int attempt = 1;; ++attempt) {
        const Snapshot snapshot = table.snapshot();
        if (!snapshot.refusal.ok())
            return snapshot.refusal;
        const auto columns = table.columns(fields, snapshot, work);
        if (!columns.ok()) {
            if (work.take_change() && attempt < max_attempts)
                continue;
            return columns.status();
        }
        const Column &ids = *columns->front();
        const auto end = ids.integers.begin() + static_cast<std::ptrdiff_t>(ids.count);
        const auto greatest = std::max_element(ids.integers.begin(), end);
        return greatest == end ? std::int64_t{0} : std::max<std::int64_t>(0, *greatest);
    }
}

Result<std::int64_t> Database::next_id(std::string_view id_field, Work &work)
{
    const Attribute *attribute = schema_->attribute(id_field);
    const Relation *defining = schema_->defining(id_field);
    if (!attribute || !is_integer(attribute->type) || !defining)
        return Status(Code::NotFound,
                      concat("no table of schema ", schema_->name, " defines the id '", id_field, "'"));
    const auto greatest = greatest_in_use(*defining, id_field, work);
    if (!greatest.ok())
        return greatest;
    const Relation *lastid = schema_->relation("lastid");
    if (!lastid || !lastid->has_field("keyname") || !lastid->has_field("keyvalue"))
        return *greatest + 1;
    return count_up(id_field, *greatest, work);
}

Result<std::int64_t> Database::count_up(std::string_view id_field, std::int64_t at_least, Work &work)
{
    const int lastid = schema_->relation_index("lastid");
    auto &table = static_cast<BaseTable &>(*tables_[static_cast<std::size_t>(lastid)]);
    const auto place = [&](std::string_view name) {
        return static_cast<std::size_t>(table.relation().field_index(name));
    };
    FieldValue key;
    key.type = FieldType::String;
    key.text = id_field;
    return table.count_up(place("keyname"), key, place("keyvalue"), at_least, work);
}

Status Database::raise_counter(std::string_view id_field, std::int64_t in_use, Work &work)
{
    return count_up(id_field, in_use - 1, work).status();
}

} // namespace orvane
