// Days and hours of epoch times, by the Gregorian calendar, in UTC without leap seconds.
#pragma once

#include <cstdint>
#include <optional>

namespace orvane::expr {

struct CivilTime {
    std::int64_t year = 0;
    std::int64_t month = 0;       // from 1
    std::int64_t day = 0;         // of the month, from 1
    std::int64_t day_of_year = 0; // from 1
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0; // whole
};

constexpr double seconds_of_day = 86400;

// None before the year 1 and after the year 9999.
std::optional<CivilTime> civil_time(double epoch);

// yyyyddd of the day that a time lies on.
std::optional<std::int64_t> yearday_of(double epoch);

// The first second of a day; none when the calendar has no such day.
std::optional<double> begin_of_yearday(std::int64_t yearday);

} // namespace orvane::expr
