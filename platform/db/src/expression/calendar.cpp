#include "expression/calendar.h"

#include <chrono>
#include <cmath>

namespace orvane::expr {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days new_year(int of)
{
    return sys_days{year{of} / std::chrono::January / 1};
}
constexpr int first_year = 1;
constexpr int last_year = 9999;
constexpr double first_second =
    static_cast<double>(new_year(first_year).time_since_epoch().count()) * seconds_of_day;
constexpr double end_second =
    static_cast<double>(new_year(last_year + 1).time_since_epoch().count()) * seconds_of_day;

} // namespace

std::optional<CivilTime> civil_time(double epoch)
{
    if (!(epoch >= first_second && epoch < end_second))
        return std::nullopt;
    const auto seconds = static_cast<std::int64_t>(std::floor(epoch));
    const std::int64_t in_day = ((seconds % 86400) + 86400) % 86400;
    const sys_days day{days{(seconds - in_day) / 86400}};
    const std::chrono::year_month_day date{day};
    CivilTime civil;
    civil.year = static_cast<int>(date.year());
    civil.month = static_cast<unsigned>(date.month());
    civil.day = static_cast<unsigned>(date.day());
    civil.day_of_year = (day - new_year(static_cast<int>(date.year()))).count() + 1;
    civil.hour = in_day / 3600;
    civil.minute = in_day / 60 % 60;
    civil.second = in_day % 60;
    return civil;
}

std::optional<std::int64_t> yearday_of(double epoch)
{
    const auto civil = civil_time(epoch);
    if (!civil)
        return std::nullopt;
    return civil->year * 1000 + civil->day_of_year;
}

std::optional<double> begin_of_yearday(std::int64_t yearday)
{
    const std::int64_t in_year = yearday % 1000;
    const std::int64_t of = yearday / 1000;
    if (of < first_year || of > last_year || in_year < 1)
        return std::nullopt;
    const int number = static_cast<int>(of);
    if (in_year > (year{number}.is_leap() ? 366 : 365))
        return std::nullopt;
    const sys_days day = new_year(number) + days{in_year - 1};
    return static_cast<double>(day.time_since_epoch().count()) * seconds_of_day;
}

} // namespace orvane::expr
