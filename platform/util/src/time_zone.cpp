#include "time_zone.h"

#include <algorithm>

namespace orvane::util {
namespace {

// No zone's clocks have ever been further from Greenwich.
constexpr int64_t furthest_offset = int64_t{26} * 3600;

constexpr char folded(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/* How far a local time is from being shown in a period. */
int64_t distance(const ZonePeriod &period, int64_t local)
{
    const int64_t time = local - period.offset;
    if (time < period.begin)
        return period.begin - time;
    return time < period.end ? 0 : time - period.end + 1;
}

} // namespace

bool same_abbreviation(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return folded(x) == folded(y); });
}

TimeZone::TimeZone(std::vector<ZonePeriod> periods, std::optional<PosixRule> rule)
    : periods_(std::move(periods)), rule_(std::move(rule))
{
}

ZonePeriod TimeZone::period_at(int64_t time) const
{
    const auto after = std::upper_bound(periods_.begin(), periods_.end(), time,
                                        [](int64_t t, const ZonePeriod &period) { return t < period.begin; });
    const ZonePeriod &period = after == periods_.begin() ? *after : *std::prev(after);
    if (!rule_ || after != periods_.end())
        return period;
    ZonePeriod ruled = rule_->period_at(time);
    ruled.begin = std::max(ruled.begin, period.begin);
    return ruled;
}

std::vector<ZonePeriod> TimeZone::periods_showing(int64_t local) const
{
    std::vector<ZonePeriod> found;
    ZonePeriod period = period_at(local - furthest_offset);
    for (;;) {
        if (period.holds(local - period.offset))
            found.push_back(period);
        if (period.end > local + furthest_offset)
            return found;
        period = period_at(period.end);
    }
}

std::optional<int32_t> TimeZone::offset_of(std::string_view abbreviation, int64_t local) const
{
    for (const ZonePeriod &period : periods_showing(local)) {
        if (same_abbreviation(period.abbreviation, abbreviation))
            return period.offset;
    }
    std::optional<int32_t> offset;
    int64_t nearest = ZonePeriod::forever;
    const auto consider = [&](const ZonePeriod &period) {
        if (!same_abbreviation(period.abbreviation, abbreviation))
            return;
        if (const int64_t away = distance(period, local); !offset || away < nearest) {
            offset = period.offset;
            nearest = away;
        }
    };
    std::for_each(periods_.begin(), periods_.end(), consider);
    for (const ZonePeriod &period : rule_periods())
        consider(period);
    return offset;
}

std::vector<ZonePeriod> TimeZone::rule_periods() const
{
    if (!rule_)
        return {};
    const int64_t begin = periods_.back().begin;
    const auto lasting = [begin](const PosixRule::Clock &clock) {
        return ZonePeriod{begin, ZonePeriod::forever, clock.offset, clock.abbreviation};
    };
    std::vector<ZonePeriod> periods{lasting(rule_->standard())};
    if (const auto &summer = rule_->summer())
        periods.push_back(lasting(*summer));
    return periods;
}

std::vector<ZonePeriod> TimeZone::all_periods() const
{
    std::vector<ZonePeriod> all = periods_;
    for (ZonePeriod &period : rule_periods())
        all.push_back(std::move(period));
    return all;
}

const TimeZone &utc_zone()
{
    static const auto *const utc = new TimeZone({{ZonePeriod::always, ZonePeriod::forever, 0, "UTC"}}, {});
    return *utc;
}

} // namespace orvane::util
