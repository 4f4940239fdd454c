#include "expression/function_table.h"

#include <algorithm>
#include <cmath>

#include "expression/geodesy.h"
#include "expression/kernel_map.h"
#include "expression/text_kernels.h"
#include "expression/time_kernels.h"

namespace orvane::expr {

namespace {

using Integer = std::int64_t;

bool absolute_integer(Integer &out, Integer a)
{
    return a >= 0 ? (out = a, true) : !__builtin_sub_overflow(Integer{0}, a, &out);
}
bool same_integer(Integer &out, Integer a)
{
    out = a;
    return true;
}

// The C++ functions, each pinned to its double form.
double absolute(double x)
{
    return std::abs(x);
}
double square_root(double x)
{
    return std::sqrt(x);
}
double exponential(double x)
{
    return std::exp(x);
}
double logarithm(double x)
{
    return std::log(x);
}
double decimal_logarithm(double x)
{
    return std::log10(x);
}
double power(double x, double y)
{
    return std::pow(x, y);
}
double floor_of(double x)
{
    return std::floor(x);
}
// + 0.0 so that no negative zero is shown.
double ceiling_of(double x)
{
    return std::ceil(x) + 0.0;
}
double rounded(double x)
{
    return std::round(x) + 0.0;
}
double sine(double x)
{
    return std::sin(x);
}
double cosine(double x)
{
    return std::cos(x);
}
double tangent(double x)
{
    return std::tan(x);
}
double arc_sine(double x)
{
    return std::asin(x);
}
double arc_cosine(double x)
{
    return std::acos(x);
}
double arc_tangent(double x)
{
    return std::atan(x);
}
double arc_tangent_of_two(double y, double x)
{
    return std::atan2(y, x);
}

double rounded_to(double x, Integer decimals)
{
    constexpr Integer most = 300;
    const double scale = std::pow(10.0, static_cast<double>(std::clamp(decimals, -most, most)));
    const double scaled = x * scale;
    // A number that is this large has no decimals to round.
    return std::isfinite(scaled) && std::abs(scaled) < 9007199254740992.0 ? std::round(scaled) / scale : x;
}

template <typename T, bool least>
void extreme(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    std::vector<Reader<T>> values;
    for (const Vector &argument : arguments)
        values.emplace_back(argument);
    for_each(selection, [&](std::size_t position) {
        int absent = 0;
        T best = values.front()[position];
        for (const Reader<T> &value : values) {
            absent |= value.presence(position);
            best = least ? std::min(best, value[position]) : std::max(best, value[position]);
        }
        detail::write<T>(detail::written<T>(out), out.presences(), position, absent == 0, best, Present);
    });
}

constexpr Function mathematics(std::string_view name, std::string_view signature, std::string_view help,
                               Kernel kernel, std::size_t arguments = 1)
{
    Function row{name, signature, "Mathematics", help};
    row.parameters = {Parameter::Real, Parameter::Real};
    row.least = row.most = arguments;
    row.kernel = kernel;
    return row;
}

constexpr Function whole(std::string_view name, std::string_view signature, std::string_view help,
                         Kernel kernel)
{
    Function row = mathematics(name, signature, help, kernel);
    row.parameters = {Parameter::Integer};
    row.result = ValueType::Integer;
    return row;
}

constexpr Function rounded_row()
{
    Function row = mathematics("round", "round(x: real, n: integer) → real",
                               "x rounded to n decimals; to tens, hundreds, … where n is negative.",
                               real_function<rounded_to, double, Integer>, 2);
    row.parameters = {Parameter::Real, Parameter::Integer};
    return row;
}

constexpr Function extreme_row(std::string_view name, std::string_view signature, std::string_view help,
                               Kernel reals, Kernel integers)
{
    Function row = mathematics(name, signature, help, reals);
    row.build = Build::Extreme;
    row.parameters = {Parameter::Any, Parameter::Any};
    row.least = 2;
    row.most = max_arguments;
    row.other_kernel = integers;
    return row;
}

constexpr Function of_text(std::string_view name, std::string_view signature, std::string_view help,
                           Kernel kernel, ValueType result = ValueType::Text)
{
    Function row{name, signature, "Text", help};
    row.parameters = {Parameter::Text, Parameter::Integer, Parameter::Integer};
    row.least = row.most = 1;
    row.result = result;
    row.kernel = kernel;
    return row;
}

constexpr Function substr_row()
{
    Function row = of_text(
        "substr", "substr(s: text, start: integer[, length: integer]) → text",
        "The characters of s from position start on, counted from 1, or from the end where start is "
        "negative (-1 is the last); at most length of them. Positions that s does not have give nothing.",
        text_substr);
    row.least = 2;
    row.most = 3;
    return row;
}

constexpr Function strcat_row()
{
    Function row = of_text(
        "strcat", "strcat(a, b, …) → text",
        "The texts joined. Integers and real numbers are written as the shortest text that reads as the "
        "same number; a time needs strtime().",
        text_strcat);
    row.parameters = {Parameter::Printable, Parameter::Printable, Parameter::Printable, Parameter::Printable};
    row.most = max_arguments;
    return row;
}

constexpr Function of_time(std::string_view name, std::string_view signature, std::string_view help,
                           Kernel kernel, ValueType result = ValueType::Integer)
{
    Function row{name, signature, "Time", help};
    row.parameters = {Parameter::Time, Parameter::Text};
    row.least = row.most = 1;
    row.result = result;
    row.kernel = kernel;
    return row;
}

constexpr Function strtime_row()
{
    Function row = of_time(
        "strtime", "strtime(t: time[, format: text]) → text",
        "A time as text, in UTC. The format takes %Y %m %d %H %M %S %j %y %b %B %a %A %D %T %Z %z %u %s "
        "%E %%; without one it is \"%D (%j) %H:%M:%S.%u %Z\".",
        time_text, ValueType::Text);
    row.most = 2;
    return row;
}

constexpr Function now_row()
{
    Function row = of_time("now", "now() → time", "The present time: one time for all rows of a run.",
                           nullptr, ValueType::Time);
    row.build = Build::Now;
    row.least = row.most = 0;
    return row;
}

constexpr Function geographic(std::string_view name, std::string_view signature, std::string_view help,
                              Kernel kernel, std::size_t arguments)
{
    Function row{name, signature, "Geography", help};
    row.parameters = {Parameter::Real, Parameter::Real, Parameter::Real, Parameter::Real};
    row.least = row.most = arguments;
    row.kernel = kernel;
    return row;
}

constexpr Function isnull_row()
{
    Function row{"isnull", "isnull(x) → boolean", "Nulls",
                 "True where x is null: where a field holds the null of its attribute, or where x has no "
                 "value, as 1 / 0 "
                 "or the sum of a null and a number."};
    row.build = Build::NullTest;
    row.parameters = {Parameter::Any};
    row.least = row.most = 1;
    row.result = ValueType::Boolean;
    row.null_rule = NullRule::Answers;
    return row;
}

constexpr Function table[] = {
    whole("abs", "abs(x: integer) → integer", "The absolute value.",
          mapped<absolute_integer, Integer, Integer>),
    mathematics("abs", "abs(x: real) → real", "The absolute value.", real_function<absolute, double>),
    mathematics("sqrt", "sqrt(x: real) → real", "The square root; null of a negative number.",
                real_function<square_root, double>),
    mathematics("exp", "exp(x: real) → real", "e to the power of x.", real_function<exponential, double>),
    mathematics("log", "log(x: real) → real", "The natural logarithm; null unless x is positive.",
                real_function<logarithm, double>),
    mathematics("log10", "log10(x: real) → real", "The logarithm to base 10; null unless x is positive.",
                real_function<decimal_logarithm, double>),
    mathematics("pow", "pow(x: real, y: real) → real", "x to the power of y, as x ** y.",
                real_function<power, double, double>, 2),
    whole("floor", "floor(x: integer) → integer", "x itself.", mapped<same_integer, Integer, Integer>),
    mathematics("floor", "floor(x: real) → real", "The greatest whole number that is not above x.",
                real_function<floor_of, double>),
    whole("ceil", "ceil(x: integer) → integer", "x itself.", mapped<same_integer, Integer, Integer>),
    mathematics("ceil", "ceil(x: real) → real", "The least whole number that is not below x.",
                real_function<ceiling_of, double>),
    whole("round", "round(x: integer) → integer", "x itself.", mapped<same_integer, Integer, Integer>),
    mathematics("round", "round(x: real) → real", "The nearest whole number; of two, the one farther from 0.",
                real_function<rounded, double>),
    rounded_row(),
    extreme_row("min", "min(a, b, …) → their type", "The least of numbers, or the earliest of times.",
                extreme<double, true>, extreme<Integer, true>),
    extreme_row("max", "max(a, b, …) → their type", "The greatest of numbers, or the latest of times.",
                extreme<double, false>, extreme<Integer, false>),
    mathematics("sin", "sin(x: real) → real", "The sine of an angle in radians.",
                real_function<sine, double>),
    mathematics("cos", "cos(x: real) → real", "The cosine of an angle in radians.",
                real_function<cosine, double>),
    mathematics("tan", "tan(x: real) → real", "The tangent of an angle in radians.",
                real_function<tangent, double>),
    mathematics("asin", "asin(x: real) → real",
                "The angle, in radians, whose sine is x; null beyond -1 to 1.",
                real_function<arc_sine, double>),
    mathematics("acos", "acos(x: real) → real",
                "The angle, in radians, whose cosine is x; null beyond -1 to 1.",
                real_function<arc_cosine, double>),
    mathematics("atan", "atan(x: real) → real", "The angle, in radians, whose tangent is x.",
                real_function<arc_tangent, double>),
    mathematics("atan2", "atan2(y: real, x: real) → real",
                "The angle, in radians from -π to π, of the point (x, y) seen from the origin.",
                real_function<arc_tangent_of_two, double, double>, 2),

    of_text("length", "length(s: text) → integer", "The number of characters; blanks at the end don't count.",
            text_length, ValueType::Integer),
    of_text("upper", "upper(s: text) → text", "The text with the letters a to z as capitals.", text_upper),
    of_text("lower", "lower(s: text) → text", "The text with the letters A to Z as small ones.", text_lower),
    of_text("trim", "trim(s: text) → text", "The text without blanks at either end.", text_trim),
    substr_row(),
    strcat_row(),

    now_row(),
    of_time(
        "epoch", "epoch(t: time) → time",
        "A time of what can be read as one: text, a number of epoch seconds, a yearday (its first second).",
        time_same, ValueType::Time),
    of_time("yearday", "yearday(t: time) → yearday", "The day that a time lies on, as yyyyddd.", time_yearday,
            ValueType::Yearday),
    of_time("year", "year(t: time) → integer", "The year, in UTC as all of these.", time_year),
    of_time("month", "month(t: time) → integer", "The month, 1 to 12.", time_month),
    of_time("day", "day(t: time) → integer", "The day of the month, 1 to 31.", time_day),
    of_time("hour", "hour(t: time) → integer", "The hour, 0 to 23.", time_hour),
    of_time("minute", "minute(t: time) → integer", "The minute, 0 to 59.", time_minute),
    of_time("second", "second(t: time) → integer", "The second, 0 to 59, without its fraction.", time_second),
    strtime_row(),

    geographic("distance", "distance(lat1: real, lon1: real, lat2: real, lon2: real) → real",
               "The angle between two points, in degrees along the great circle. The earth is a sphere here "
               "and latitudes are "
               "taken as they are given; null where a latitude lies beyond a pole.",
               real_function<great_circle_degrees, double, double, double, double>, 4),
    geographic("azimuth", "azimuth(lat1: real, lon1: real, lat2: real, lon2: real) → real",
               "The direction in which the second point lies at the first one, in degrees clockwise from "
               "north, from 0 up to, "
               "not including, 360; 0 where they are one point.",
               real_function<great_circle_azimuth, double, double, double, double>, 4),
    geographic("deg2km", "deg2km(x: real) → real",
               "Kilometres along the surface of x degrees of a great circle, on a sphere of 6371 km radius.",
               real_function<degrees_to_km, double>, 1),
    geographic("km2deg", "km2deg(x: real) → real",
               "Degrees of a great circle of x kilometres along the surface, on a sphere of 6371 km radius.",
               real_function<km_to_degrees, double>, 1),

    isnull_row(),
};

} // namespace

std::span<const Function> functions()
{
    return table;
}

std::span<const Function> functions_named(std::string_view name)
{
    const auto named = [&](const Function &row) { return row.name == name; };
    const auto first = std::find_if(std::begin(table), std::end(table), named);
    return {first, std::find_if_not(first, std::end(table), named)};
}

std::vector<std::string_view> function_names()
{
    std::vector<std::string_view> names;
    for (const Function &row : table)
        if (names.empty() || names.back() != row.name)
            names.push_back(row.name);
    return names;
}

} // namespace orvane::expr
