#include "column/column_cache.h"

#include "column/column.h"
#include "work/machine_memory.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace orvane {

namespace {

constexpr std::size_t little = 4 << 20; // for which the system is not asked
constexpr std::size_t most_reserve = std::size_t{512} << 20;

// Nothing where the setting is not understood.
std::size_t unit_of(std::string_view ending)
{
    if (ending.empty())
        return 1;
    constexpr std::string_view units = "KMG";
    const auto unit = units.find(ending[0]);
    return ending.size() == 1 && unit != std::string_view::npos ? std::size_t{1} << (10 * (unit + 1)) : 0;
}

} // namespace

std::size_t column_budget()
{
    const char *setting = std::getenv("ORVANE_COLUMN_BUDGET");
    const std::string_view text(setting ? setting : "");
    std::size_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return machine_memory() / 4;
    const std::size_t unit = unit_of(text.substr(static_cast<std::size_t>(stop - text.data())));
    return unit > 0 && number <= std::numeric_limits<std::size_t>::max() / unit ? number * unit
                                                                                : machine_memory() / 4;
}

ColumnCache::ColumnCache(std::size_t budget_bytes, Available available)
    : budget_(budget_bytes), available_(available ? available : available_memory),
      reserve_(std::min(budget_bytes / 4, most_reserve))
{
}

// Half of what is free is left to others, and to what operations need beside their columns.
bool ColumnCache::has_room_for(std::size_t bytes) const
{
    if (bytes > budget_)
        return false;
    return bytes < little || bytes <= (available_() / 2) + used_ / 2;
}

std::shared_ptr<const Column> ColumnCache::find(FileVersion version, int field)
{
    const auto found = index_.find({version, field});
    if (found == index_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return entries_.front().column;
}

void ColumnCache::keep(FileVersion version, int field, std::shared_ptr<const Column> column)
{
    const Key key{version, field};
    if (const auto found = index_.find(key); found != index_.end())
        erase(found->second);
    const std::size_t bytes = column->bytes();
    if (bytes > budget_)
        return;
    while (used_ + bytes > budget_)
        erase(std::prev(entries_.end()));
    // What is in use elsewhere frees nothing by going.
    while (bytes >= little && !entries_.empty() && available_() < reserve_)
        erase(std::prev(entries_.end()));
    entries_.push_front(Entry{key, std::move(column), bytes});
    index_[key] = entries_.begin();
    used_ += bytes;
}

void ColumnCache::update(FileVersion version, const Update &update)
{
    auto at = index_.lower_bound({version, std::numeric_limits<int>::min()});
    while (at != index_.end() && at->first.first == version) {
        const int field = at->first.second;
        const auto entry = at->second;
        ++at;
        // Made by us as one that can be changed; constant is what is handed out.
        if (entry->column.use_count() != 1 || !update(field, const_cast<Column &>(*entry->column))) {
            erase(entry);
            continue;
        }
        used_ -= entry->bytes;
        entry->bytes = entry->column->bytes();
        used_ += entry->bytes;
    }
    while (used_ > budget_)
        erase(std::prev(entries_.end()));
}

void ColumnCache::drop(FileVersion version)
{
    auto at = index_.lower_bound({version, std::numeric_limits<int>::min()});
    while (at != index_.end() && at->first.first == version) {
        const auto entry = at->second;
        ++at;
        erase(entry);
    }
}

void ColumnCache::erase(Entries::iterator entry)
{
    used_ -= entry->bytes;
    index_.erase(entry->key);
    entries_.erase(entry);
}

} // namespace orvane
