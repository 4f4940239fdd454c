/* Zones as the system's zone data have them, each read once. */

#include <date/tz.h>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include <orvane/util.h>

#include "notice_epoch.h"
#include "time_zone.h"

namespace orvane::util {
namespace {

// Where the zone library looks, too.
constexpr const char *zone_folders[] = {"/usr/share/zoneinfo/", "/usr/share/zoneinfo/uclibc/"};

/* The rule for the time after the last transition: the last line of the zone's file. The zone library reads
 * the transitions alone, which end in 2037. */
std::optional<PosixRule> closing_rule(const std::string &name)
{
    for (const char *folder : zone_folders) {
        std::ifstream file(folder + name, std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(file), {}};
        if (!content.starts_with("TZif") || content.size() < 5 || content[4] < '2' || content.back() != '\n')
            continue;
        const size_t line = content.rfind('\n', content.size() - 2);
        if (line != std::string::npos)
            return PosixRule::parsed(std::string_view(content).substr(line + 1, content.size() - line - 2));
    }
    return std::nullopt;
}

std::unique_ptr<const TimeZone> loaded(const date::time_zone &zone)
{
    // The end of time in the zone library's terms: the last second of the year 32767.
    constexpr int64_t library_end = 971000000000;
    std::vector<ZonePeriod> periods;
    date::sys_info info = zone.get_info(date::sys_days{date::year{-30000} / 1 / 1});
    for (;;) {
        periods.push_back({periods.empty() ? ZonePeriod::always : periods.back().end,
                           info.end.time_since_epoch().count(), static_cast<int32_t>(info.offset.count()),
                           info.abbrev});
        if (info.end.time_since_epoch().count() > library_end || info.end <= info.begin)
            break;
        info = zone.get_info(info.end);
    }
    periods.back().end = ZonePeriod::forever;
    return std::make_unique<const TimeZone>(std::move(periods), closing_rule(zone.name()));
}

class ZoneRegistry
{
public:
    const TimeZone *find(std::string_view name);
    void tell_unknown(const std::string &name);

private:
    std::mutex mutex_;
    std::map<std::string, std::unique_ptr<const TimeZone>, std::less<>> zones_;
    std::set<std::string, std::less<>> told_;
    uint64_t told_epoch_ = 0;
};

const date::time_zone *in_zone_data(std::string_view name)
{
    try {
        return date::locate_zone(name);
    } catch (const std::runtime_error &) { // no such zone, or no zone data at all
        return nullptr;
    }
}

const TimeZone *ZoneRegistry::find(std::string_view name)
{
    const std::lock_guard lock(mutex_);
    const auto known = zones_.find(name);
    if (known != zones_.end())
        return known->second.get();
    const date::time_zone *const data = in_zone_data(name);
    if (!data)
        return nullptr;
    try {
        return zones_.emplace(name, loaded(*data)).first->second.get();
    } catch (const std::runtime_error &error) {
        elog_notice("The data of the time zone '%s' can't be read: %s", data->name().c_str(), error.what());
        return nullptr;
    }
}

/* Once for a name and a listener: a table shows thousands of times in one zone. */
void ZoneRegistry::tell_unknown(const std::string &name)
{
    constexpr size_t most_told = 1000;
    {
        const std::lock_guard lock(mutex_);
        if (told_epoch_ != notice_epoch() || told_.size() >= most_told)
            told_.clear();
        told_epoch_ = notice_epoch();
        if (!told_.insert(name).second)
            return;
    }
    elog_notice("The time zone '%s' is not known; times are shown in UTC. Zones are named like "
                "America/Los_Angeles or Europe/Berlin.",
                name.c_str());
}

ZoneRegistry &registry()
{
    static auto *const zones = new ZoneRegistry; // never destroyed: zones live as long as the program
    return *zones;
}

} // namespace

const TimeZone *find_zone(std::string_view name)
{
    // Every visible cell asks, mostly for one zone: that one needs no lock.
    thread_local std::string last_name;
    thread_local const TimeZone *last_zone = nullptr;
    if (last_zone && last_name == name)
        return last_zone;
    const TimeZone *const zone = name == "UTC" ? &utc_zone() : registry().find(name);
    if (zone) {
        last_name = name;
        last_zone = zone;
    }
    return zone;
}

const TimeZone &zone_or_utc(const char *name)
{
    if (!name || !*name)
        return utc_zone();
    if (const TimeZone *zone = find_zone(name))
        return *zone;
    registry().tell_unknown(name);
    return utc_zone();
}

std::vector<std::string_view> zone_names()
{
    std::vector<std::string_view> names;
    try {
        for (const date::time_zone &zone : date::get_tzdb().zones)
            names.push_back(zone.name());
    } catch (const std::runtime_error &) { // no zone data: only UTC is known
    }
    return names;
}

} // namespace orvane::util
