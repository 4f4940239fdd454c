#include "zone_abbreviation.h"

#include <algorithm>
#include <map>
#include <string>

namespace orvane::util {
namespace {

struct UsualZone {
    std::string_view abbreviation;
    std::string_view zone;
};

// Abbreviations that several zones use with different offsets, and whose zone is meant when nothing else
// tells.
constexpr UsualZone usual_zones[] = {
    {"EST", "America/New_York"},    {"EDT", "America/New_York"},    {"CST", "America/Chicago"},
    {"CDT", "America/Chicago"},     {"MST", "America/Denver"},      {"MDT", "America/Denver"},
    {"PST", "America/Los_Angeles"}, {"PDT", "America/Los_Angeles"}, {"AST", "America/Halifax"},
    {"IST", "Asia/Kolkata"},        {"BST", "Europe/London"},       {"KST", "Asia/Seoul"},
    {"MSK", "Europe/Moscow"},       {"NST", "America/St_Johns"},
};

struct AnyCase {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const
    {
        const auto folded = [](char c) {
            return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        };
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [&](char x, char y) { return folded(x) < folded(y); });
    }
};

using Uses = std::map<std::string, std::vector<ZonePeriod>, AnyCase>;

/* Every period of every zone by its abbreviation; made when it is first needed. */
const Uses &uses()
{
    static const auto *const all = [] {
        auto *made = new Uses;
        for (const std::string_view name : zone_names()) {
            const TimeZone *zone = find_zone(name);
            if (!zone)
                continue;
            for (ZonePeriod &period : zone->all_periods())
                (*made)[period.abbreviation].push_back(std::move(period));
        }
        return made;
    }();
    return *all;
}

/* The one offset of the periods that `counts` holds for; nothing when there is none or more than one. */
template <typename Counts>
std::optional<int32_t> agreed_offset(const std::vector<ZonePeriod> &periods, Counts &&counts)
{
    std::optional<int32_t> offset;
    for (const ZonePeriod &period : periods) {
        if (!counts(period) || offset == period.offset)
            continue;
        if (offset)
            return std::nullopt;
        offset = period.offset;
    }
    return offset;
}

std::optional<int32_t> offset_in_force(const TimeZone &zone, std::string_view abbreviation, int64_t local)
{
    for (const ZonePeriod &period : zone.periods_showing(local)) {
        if (same_abbreviation(period.abbreviation, abbreviation))
            return period.offset;
    }
    return std::nullopt;
}

std::optional<int32_t> usual_offset(std::string_view abbreviation, int64_t local)
{
    const auto usual =
        std::find_if(std::begin(usual_zones), std::end(usual_zones), [&](const UsualZone &each) {
            return same_abbreviation(each.abbreviation, abbreviation);
        });
    const TimeZone *zone = usual == std::end(usual_zones) ? nullptr : find_zone(usual->zone);
    return zone ? zone->offset_of(abbreviation, local) : std::nullopt;
}

} // namespace

std::optional<int32_t> abbreviated_offset(std::string_view abbreviation, int64_t local,
                                          const std::vector<const TimeZone *> &zones)
{
    for (const std::string_view greenwich : {"Z", "UTC", "GMT", "UT"}) {
        if (same_abbreviation(abbreviation, greenwich))
            return 0;
    }
    for (const TimeZone *zone : zones) {
        if (const auto offset = offset_in_force(*zone, abbreviation, local))
            return offset;
    }
    for (const TimeZone *zone : zones) {
        if (const auto offset = zone->offset_of(abbreviation, local))
            return offset;
    }
    if (const auto offset = usual_offset(abbreviation, local))
        return offset;
    const auto used = uses().find(abbreviation);
    if (used == uses().end())
        return std::nullopt;
    const auto now = agreed_offset(
        used->second, [&](const ZonePeriod &period) { return period.holds(local - period.offset); });
    return now ? now : agreed_offset(used->second, [](const ZonePeriod &) { return true; });
}

} // namespace orvane::util
