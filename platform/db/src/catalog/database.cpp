#include "catalog/database.h"

#include <algorithm>

namespace orvane {

Database::Database(LocatedDatabase located, bool writable, Storage &storage)
    : path_(std::move(located.path)), descriptor_(std::move(located.descriptor)),
      schema_(std::move(located.schema)), writable_(writable)
{
    const FilePolicy policy{descriptor_.locks == Locks::Local, descriptor_.durability == Durability::Disk};
    const LocatedPath home = path_.folder();
    const std::string stem = path_.name();
    for (const Relation &relation : schema_->relations()) {
        std::vector<LocatedPath> places;
        for (const std::string &folder : descriptor_.dbpath) {
            // In the descriptor's own folder the path keeps the form in which it was given.
            places.push_back(folder == "." ? path_.with_ending("." + relation.name)
                                           : home.entry(folder).entry(stem + "." + relation.name));
        }
        tables_.push_back(
            std::make_shared<BaseTable>(relation, *schema_, storage, std::move(places), writable, policy));
    }
}

std::int64_t Database::table_count() const
{
    return std::count_if(tables_.begin(), tables_.end(), [](const auto &table) { return table != nullptr; });
}

std::int64_t Database::table_index(std::string_view table_name) const
{
    if (const int relation = schema_->relation_index(table_name); relation >= 0)
        return relation;
    for (std::size_t i = schema_->relations().size(); i < tables_.size(); ++i)
        if (tables_[i] && tables_[i]->name() == table_name)
            return static_cast<std::int64_t>(i);
    return -1;
}

std::vector<std::string_view> Database::table_names() const
{
    std::vector<std::string_view> names;
    for (const auto &table : tables_)
        if (table)
            names.push_back(table->name());
    return names;
}

} // namespace orvane
