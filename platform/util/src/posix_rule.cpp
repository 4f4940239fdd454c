#include "posix_rule.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <date/date.h>

namespace orvane::util {
namespace {

int64_t seconds_of(date::sys_days day)
{
    return static_cast<int64_t>(day.time_since_epoch().count()) * 86400;
}

/* Reads a rule from its start; a reading that fails says so and leaves the place undefined. */
class RuleScanner
{
public:
    explicit RuleScanner(std::string_view text) : rest_(text) {}

    bool at_end() const { return rest_.empty(); }

    bool literal(char wanted)
    {
        if (!rest_.starts_with(wanted))
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool number(int &value, int least, int most)
    {
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (rest_.empty() || rest_[0] == '-' || error != std::errc() || value < least || value > most)
            return false;
        rest_.remove_prefix(static_cast<size_t>(end - rest_.data()));
        return true;
    }

    bool abbreviation(std::string &name)
    {
        const bool quoted = literal('<');
        size_t length = 0;
        while (length < rest_.size() && (quoted ? rest_[length] != '>' : is_letter(rest_[length])))
            ++length;
        name = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return length >= 3 && (!quoted || literal('>'));
    }

    /* [+-]h[h[h]][:mm[:ss]] in seconds. */
    bool duration(int64_t &seconds)
    {
        const bool negative = literal('-');
        if (!negative)
            literal('+');
        int hours = 0, minutes = 0, rest = 0;
        if (!number(hours, 0, 167))
            return false;
        if (literal(':')) {
            if (!number(minutes, 0, 59) || (literal(':') && !number(rest, 0, 59)))
                return false;
        }
        seconds = hours * 3600 + minutes * 60 + rest;
        if (negative)
            seconds = -seconds;
        return true;
    }

    bool change(PosixRule::Change &change)
    {
        using Change = PosixRule::Change;
        if (literal('J')) {
            change.form = Change::julian;
            if (!number(change.day, 1, 365))
                return false;
        } else if (literal('M')) {
            change.form = Change::weekday_of_month;
            if (!number(change.month, 1, 12) || !literal('.') || !number(change.week, 1, 5) ||
                !literal('.') || !number(change.day, 0, 6))
                return false;
        } else {
            change.form = Change::day_of_year;
            if (!number(change.day, 0, 365))
                return false;
        }
        return !literal('/') || duration(change.time_of_day);
    }

private:
    static bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

    std::string_view rest_;
};

} // namespace

int64_t PosixRule::Change::local_time(int year) const
{
    const date::year of{year};
    const auto new_year = date::sys_days{of / date::January / 1};
    switch (form) {
    case julian: // February 29 is never counted
        return seconds_of(new_year + date::days{day - 1 + (of.is_leap() && day >= 60 ? 1 : 0)}) + time_of_day;
    case day_of_year:
        return seconds_of(new_year + date::days{day}) + time_of_day;
    case weekday_of_month:
        break;
    }
    const date::weekday weekday{static_cast<unsigned>(day)};
    const auto in_month = of / date::month{static_cast<unsigned>(month)};
    const auto found = week == 5 ? date::sys_days{in_month / weekday[date::last]}
                                 : date::sys_days{in_month / weekday[static_cast<unsigned>(week)]};
    return seconds_of(found) + time_of_day;
}

std::optional<PosixRule> PosixRule::parsed(std::string_view text)
{
    RuleScanner scanner(text);
    PosixRule rule;
    int64_t west = 0; // the notation counts offsets westward
    if (!scanner.abbreviation(rule.standard_.abbreviation) || !scanner.duration(west))
        return std::nullopt;
    rule.standard_.offset = static_cast<int32_t>(-west);
    if (scanner.at_end())
        return rule;
    Clock summer;
    if (!scanner.abbreviation(summer.abbreviation))
        return std::nullopt;
    summer.offset = rule.standard_.offset + 3600;
    if (!scanner.literal(',')) {
        if (!scanner.duration(west) || !scanner.literal(','))
            return std::nullopt;
        summer.offset = static_cast<int32_t>(-west);
    }
    if (!scanner.change(rule.summer_begins_) || !scanner.literal(',') || !scanner.change(rule.summer_ends_) ||
        !scanner.at_end())
        return std::nullopt;
    rule.summer_ = std::move(summer);
    return rule;
}

ZonePeriod PosixRule::period_at(int64_t time) const
{
    ZonePeriod period{ZonePeriod::always, ZonePeriod::forever, standard_.offset, standard_.abbreviation};
    if (!summer_)
        return period;
    struct Transition {
        int64_t time;
        const Clock *clock;
    };
    const date::sys_days day{date::floor<date::days>(std::chrono::seconds{time})};
    const int year = static_cast<int>(date::year_month_day{day}.year());
    std::array<Transition, 10> transitions;
    size_t count = 0;
    for (int each = year - 2; each <= year + 2; ++each) {
        // At equal times summer's beginning comes last: a zone may have summer time all year.
        transitions[count++] = {summer_ends_.local_time(each) - summer_->offset, &standard_};
        transitions[count++] = {summer_begins_.local_time(each) - standard_.offset, &*summer_};
    }
    std::stable_sort(transitions.begin(), transitions.end(),
                     [](const Transition &a, const Transition &b) { return a.time < b.time; });
    for (const Transition &transition : transitions) {
        if (transition.time > time) {
            period.end = transition.time;
            break;
        }
        period = {transition.time, ZonePeriod::forever, transition.clock->offset,
                  transition.clock->abbreviation};
    }
    return period;
}

} // namespace orvane::util
