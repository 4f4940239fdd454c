// The views of a database: their names, their indexes, and what happens to them when records are numbered
// anew.
#include "catalog/database.h"

#include "base/concat.h"
#include "edit/field_text.h"

#include <algorithm>

namespace orvane {

namespace {

// Names that stand for something else where a table's name is looked up.
constexpr std::string_view reserved_names[] = {"dbALL", "dbSCRATCH", "dbNULL"};

constexpr std::size_t max_name_bytes = 255; // as of a file's name
constexpr std::size_t max_shown_bytes = 60;

} // namespace

Status Database::check_view_name(std::string_view view_name) const
{
    const auto refused = [&](std::string_view why) {
        const bool whole = view_name.size() <= max_shown_bytes;
        return Status(Code::Argument,
                      concat("a view cannot have the name '", view_name.substr(0, max_shown_bytes),
                             whole ? "': " : "…': ", why));
    };
    if (view_name.size() > max_name_bytes)
        return refused(concat("it has ", view_name.size(), " bytes, and ", max_name_bytes, " are the most"));
    if (view_name.find('/') != std::string_view::npos)
        return refused("it holds a slash, and a view may be saved as a file of its name");
    if (!check_characters(view_name, "the name").ok())
        return refused("it is no UTF-8 without control characters");
    if (std::find(std::begin(reserved_names), std::end(reserved_names), view_name) !=
        std::end(reserved_names))
        return refused("it has a meaning of its own");
    if (table_index(view_name) >= 0)
        return refused("a table or view of that name is there already");
    if (freed_member(view_name))
        return refused("a freed view of that name is still a member of another one");
    return Status();
}

std::shared_ptr<Table> Database::freed_member(std::string_view name) const
{
    for (const auto &kept : all_views_)
        if (auto grouped = std::dynamic_pointer_cast<GroupedView>(kept.lock());
            grouped && grouped->name() == name)
            return grouped;
    return nullptr;
}

std::int64_t Database::index_for_lookup(std::string_view table_name)
{
    const std::int64_t listed = table_index(table_name);
    if (listed >= 0)
        return listed;
    const auto freed = freed_member(table_name);
    return freed ? index_for_bundles(freed) : -1;
}

void Database::remember_view(const std::shared_ptr<Table> &view)
{
    std::erase_if(all_views_, [](const auto &kept) { return kept.expired(); });
    all_views_.push_back(view);
}

std::int64_t Database::add_view(std::shared_ptr<Table> view)
{
    remember_view(view);
    tables_.push_back(std::move(view));
    return static_cast<std::int64_t>(tables_.size() - 1);
}

void Database::free_view(std::int64_t index)
{
    const Table *view = table(index);
    std::erase_if(answers_, [view](const auto &answer) { return answer.first.second == view; });
    tables_[static_cast<std::size_t>(index)].reset();
}

std::shared_ptr<Table> Database::unlisted_table(std::int64_t index) const
{
    const std::int64_t at = index - first_unlisted;
    if (at < 0 || at >= static_cast<std::int64_t>(unlisted_.size()))
        return nullptr;
    return unlisted_[static_cast<std::size_t>(at)].lock();
}

std::int64_t Database::index_for_bundles(const std::shared_ptr<Table> &source)
{
    for (std::size_t i = 0; i < tables_.size(); ++i)
        if (tables_[i] == source)
            return static_cast<std::int64_t>(i);
    for (std::size_t i = 0; i < unlisted_.size(); ++i) {
        if (unlisted_[i].lock() == source)
            return first_unlisted + static_cast<std::int64_t>(i);
        if (unlisted_[i].expired()) // what is gone keeps its number, and else no memory
            unlisted_[i].reset();
    }
    unlisted_.push_back(source);
    return first_unlisted + static_cast<std::int64_t>(unlisted_.size() - 1);
}

// Numbers change from the bottom up: a table's records, the rows of views over it, the bundles of those rows,
// which are records again.
void Database::renumber(RecordTable &table, std::uint64_t generation, std::span<const RowNumber> renumbered)
{
    static_cast<void>(table.snapshot()); // the numbers hold for the records as they are now
    for (const auto &kept : all_views_)
        if (const auto view = std::dynamic_pointer_cast<View>(kept.lock()))
            if (const auto rows = view->delayed_rows()) // of which a copy lives while it delivers
                rows->deliver_before_renumbering(table, generation,
                                                 static_cast<std::int64_t>(renumbered.size()));
    for (const auto &kept : all_views_)
        if (const auto view = std::dynamic_pointer_cast<View>(kept.lock()))
            if (const auto moved = view->renumber(table, generation, renumbered); !moved.empty())
                follow_rows(*view, moved);
    follow_rows(table, renumbered); // a grouped view can be the source of another one
}

void Database::follow_rows(const Table &view, std::span<const RowNumber> moved)
{
    for (const auto &kept : all_views_)
        if (const auto grouped = std::dynamic_pointer_cast<GroupedView>(kept.lock());
            grouped && grouped->source().get() == &view)
            renumber(*grouped, grouped->generation(), grouped->renumber(moved));
}

} // namespace orvane
