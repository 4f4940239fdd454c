#include "written_time.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "calendar_range.h"
#include "white_space.h"

namespace orvane::util {
namespace {

// Bare digits are a day only in years in which instruments or catalogues date events; else they are seconds.
constexpr int first_plausible_year = 1800;
constexpr int last_plausible_year = 2199;

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/* The fields of a pattern. */
struct Fields {
    int year = 1970;
    int month = 1;
    int day = 1;
    int day_of_year = 0; // 0: the date is given by month and day
    int week = 0;        // 0: likewise
    int weekday = 1;     // from Monday, 1
    int hour = 0;
    int minute = 0;
    int second = 0;
    int nanoseconds = 0;
    int ignored = 0;
};

/* A letter of a pattern: how many digits it takes and the values allowed. */
struct FieldRule {
    char letter;
    int Fields::*field;
    size_t least_digits;
    size_t most_digits;
    int least;
    int most;
};

// Capitals take their full width. Other characters of a pattern stand for themselves, but for y (a year with
// a sign or more digits), f (decimals of the second, may be missing) and blank (any white space, may be
// missing).
constexpr FieldRule field_rules[] = {
    {'Y', &Fields::year, 4, 4, 0, last_year}, {'M', &Fields::month, 2, 2, 1, 12},
    {'m', &Fields::month, 1, 2, 1, 12},       {'D', &Fields::day, 2, 2, 1, 31},
    {'d', &Fields::day, 1, 2, 1, 31},         {'J', &Fields::day_of_year, 3, 3, 1, 366},
    {'K', &Fields::week, 2, 2, 1, 53},        {'E', &Fields::weekday, 1, 1, 1, 7},
    {'H', &Fields::hour, 2, 2, 0, 24},        {'h', &Fields::hour, 1, 2, 0, 24},
    {'N', &Fields::minute, 2, 2, 0, 59},      {'S', &Fields::second, 2, 2, 0, 60},
    {'X', &Fields::ignored, 3, 3, 1, 366},
};

// What epoch2str adds to a date, "(038)", repeats it: who edits the date need not edit it, too.
constexpr std::string_view date_patterns[] = {
    "m/d/y (X)", "m/d/y", "Y-M-D", "Y/m/d", "Y-J", "Y-WK-E", "YWKE", "YMD", "YJ", "y-M-D",
};

struct ClockPattern {
    std::string_view pattern;
    bool only_after_t;
};

constexpr ClockPattern clock_patterns[] = {
    {"h:N:Sf", false}, {"h:N", false}, {"HNSf", false}, {"HN", false}, {"H", true},
};

class Scanner
{
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    std::string_view rest() const { return rest_; }
    bool at_end() const { return rest_.empty(); }
    char peek() const { return rest_.empty() ? '\0' : rest_.front(); }
    void skip(size_t count) { rest_.remove_prefix(count); }

    bool literal(char wanted)
    {
        if (peek() != wanted || at_end())
            return false;
        skip(1);
        return true;
    }

    bool blanks()
    {
        const size_t before = rest_.size();
        while (!at_end() && is_white(peek()))
            skip(1);
        return rest_.size() != before;
    }

    size_t digits_ahead(size_t from = 0) const
    {
        size_t count = 0;
        while (from + count < rest_.size() && is_digit(rest_[from + count]))
            ++count;
        return count;
    }

    /* A number of at most `most_digits` of the digits ahead. */
    bool number(int &value, size_t least_digits, size_t most_digits, int least, int most)
    {
        const size_t length = std::min(digits_ahead(), most_digits);
        if (length < least_digits)
            return false;
        std::from_chars(rest_.data(), rest_.data() + length, value);
        skip(length);
        return value >= least && value <= most;
    }

    bool signed_year(int &year)
    {
        const bool before_year_zero = literal('-');
        const size_t length = digits_ahead();
        if (!number(year, 4, 4, 0, last_year) || length != 4)
            return false;
        if (before_year_zero)
            year = -year;
        return true;
    }

    /* Decimals of a second, any number of them, rounded to nanoseconds. */
    bool fraction(int &nanoseconds)
    {
        if (peek() != '.' && peek() != ',')
            return true;
        skip(1);
        const size_t length = digits_ahead();
        for (size_t i = 0; i < 9; ++i)
            nanoseconds = nanoseconds * 10 + (i < length ? rest_[i] - '0' : 0);
        if (length > 9 && rest_[9] >= '5')
            ++nanoseconds;
        skip(length);
        return length > 0;
    }

    bool pattern(std::string_view pattern, Fields &fields);

private:
    bool element(char letter, Fields &fields);

    std::string_view rest_;
};

bool Scanner::element(char letter, Fields &fields)
{
    switch (letter) {
    case 'y':
        return signed_year(fields.year);
    case 'f':
        return fraction(fields.nanoseconds);
    case ' ':
        blanks();
        return true;
    default:
        break;
    }
    for (const FieldRule &rule : field_rules) {
        if (rule.letter == letter)
            return number(fields.*rule.field, rule.least_digits, rule.most_digits, rule.least, rule.most);
    }
    return literal(letter);
}

/* Takes a pattern that doesn't end amid digits; otherwise nothing is taken. */
bool Scanner::pattern(std::string_view pattern, Fields &fields)
{
    const std::string_view start = rest_;
    Fields read = fields;
    const bool taken = std::all_of(pattern.begin(), pattern.end(), [&](char c) { return element(c, read); });
    if (!taken || is_digit(peek())) {
        rest_ = start;
        return false;
    }
    fields = read;
    return true;
}

/* The day that the fields give, if there is such a day. */
std::optional<date::sys_days> day_of(const Fields &fields)
{
    const date::year year{fields.year};
    const auto new_year = date::sys_days{year / date::January / 1};
    if (fields.day_of_year > 0) {
        if (fields.day_of_year == 366 && !year.is_leap())
            return std::nullopt;
        return new_year + date::days{fields.day_of_year - 1};
    }
    if (fields.week > 0) { // week 1 has the year's first Thursday
        const auto first_monday = [](date::year y) {
            return date::sys_days{y / date::January / date::Thursday[1]} - date::days{3};
        };
        const auto day = first_monday(year) + date::days{(fields.week - 1) * 7 + fields.weekday - 1};
        return day < first_monday(year + date::years{1}) ? std::optional(day) : std::nullopt;
    }
    const date::year_month_day day{year, date::month{static_cast<unsigned>(fields.month)},
                                   date::day{static_cast<unsigned>(fields.day)}};
    return day.ok() ? std::optional(date::sys_days{day}) : std::nullopt;
}

/* A zone's offset: +hh, +hhmm, +hh:mm, and with seconds as local mean times have them. */
bool read_offset(Scanner &scanner, WrittenTime &time)
{
    const bool west = scanner.peek() == '-';
    scanner.skip(1);
    int hours = 0, minutes = 0, seconds = 0;
    const auto two = [&scanner](int &value, int most) { return scanner.number(value, 2, 2, 0, most); };
    if (!two(hours, 23))
        return false;
    const bool colons = scanner.literal(':');
    if (colons || is_digit(scanner.peek())) {
        if (!two(minutes, 59))
            return false;
        if ((colons ? scanner.literal(':') : is_digit(scanner.peek())) && !two(seconds, 59))
            return false;
    }
    const int size = hours * 3600 + minutes * 60 + seconds;
    time.offset = west ? -size : size;
    return true;
}

/* What may end a time: nothing, an offset, or an abbreviation of letters. */
bool read_zone(Scanner &scanner, WrittenTime &time, bool after_clock)
{
    const bool apart = scanner.blanks();
    if (scanner.at_end())
        return true;
    if (scanner.peek() == '+' || scanner.peek() == '-') {
        // Right behind a date it would look like one more part of the date.
        return (apart || after_clock) && read_offset(scanner, time) && scanner.at_end();
    }
    const std::string_view rest = scanner.rest();
    if (!std::all_of(rest.begin(), rest.end(), is_letter))
        return false;
    time.abbreviation = rest;
    return true;
}

bool read_clock(Scanner &scanner, Fields &fields, bool after_t)
{
    for (const auto &[pattern, only_after_t] : clock_patterns) {
        if ((after_t || !only_after_t) && scanner.pattern(pattern, fields))
            return true;
    }
    return false;
}

enum class Separation { none, t, other, wrong };

/* What stands between a date and a time of day, taken when a time of day follows. */
Separation read_separator(Scanner &scanner, bool colon_allowed)
{
    const char next = scanner.peek();
    if ((next == 'T' || next == 't') && scanner.digits_ahead(1) > 0) {
        scanner.skip(1);
        return Separation::t;
    }
    if (next == ':') {
        scanner.skip(1);
        return colon_allowed && is_digit(scanner.peek()) ? Separation::other : Separation::wrong;
    }
    Scanner ahead = scanner;
    if (ahead.blanks() && is_digit(ahead.peek())) {
        scanner = ahead;
        return Separation::other;
    }
    return Separation::none;
}

/* Reads what follows a date up to the end of the text. */
bool read_rest(Scanner &scanner, Fields &fields, WrittenTime &time)
{
    const Separation separation = read_separator(scanner, fields.day_of_year > 0);
    if (separation == Separation::wrong)
        return false;
    const bool clock = separation != Separation::none;
    return (!clock || read_clock(scanner, fields, separation == Separation::t)) &&
           read_zone(scanner, time, clock);
}

/* True for digits alone that are to be read as yyyyddd or yyyymmdd. */
bool is_bare_day(std::string_view text)
{
    if (!std::all_of(text.begin(), text.end(), is_digit))
        return false;
    Fields fields;
    Scanner scanner(text);
    const bool taken = text.size() == 7   ? scanner.pattern("YJ", fields)
                       : text.size() == 8 ? scanner.pattern("YMD", fields)
                                          : false;
    return taken && fields.year >= first_plausible_year && fields.year <= last_plausible_year;
}

} // namespace

std::optional<double> written_number(std::string_view text)
{
    if (text.empty() || is_bare_day(text))
        return std::nullopt;
    if (text.starts_with('+') && !text.substr(1).starts_with('-'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<WrittenTime> written_time(std::string_view text)
{
    Scanner scanner(text);
    Fields fields;
    if (!std::any_of(std::begin(date_patterns), std::end(date_patterns),
                     [&](std::string_view pattern) { return scanner.pattern(pattern, fields); }))
        return std::nullopt;
    WrittenTime time;
    if (!read_rest(scanner, fields, time))
        return std::nullopt;
    const auto day = day_of(fields);
    const bool past_midnight = fields.hour == 24 && fields.minute + fields.second + fields.nanoseconds > 0;
    if (!day || past_midnight)
        return std::nullopt;
    time.local_seconds = seconds_at_midnight(*day) + fields.hour * 3600 + fields.minute * 60 + fields.second;
    time.nanoseconds = fields.nanoseconds;
    time.leap_second = fields.second == 60;
    return time;
}

} // namespace orvane::util
