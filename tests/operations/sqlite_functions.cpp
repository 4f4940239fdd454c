#include "operations/sqlite_functions.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <regex.h>
#include <stdexcept>
#include <string>

namespace {

constexpr double degree = 0.017453292519943295;
constexpr double kilometresPerDegree = 6371.0 * degree;

using Arguments = sqlite3_value **;

double number(sqlite3_value *value)
{
    return sqlite3_value_double(value);
}

std::string text(sqlite3_value *value)
{
    return reinterpret_cast<const char *>(sqlite3_value_text(value));
}

std::string withoutBlanksAtEnd(std::string s)
{
    const size_t last = s.find_last_not_of(' ');
    s.resize(last == std::string::npos ? 0 : last + 1);
    return s;
}

void answer(sqlite3_context *context, double value)
{
    if (std::isfinite(value))
        sqlite3_result_double(context, value);
    else
        sqlite3_result_null(context);
}

// The formula of half angles; the library's works with other ones.
double distance(double lat1, double lon1, double lat2, double lon2)
{
    const double lat = std::sin((lat2 - lat1) * degree / 2);
    const double lon = std::sin((lon2 - lon1) * degree / 2);
    const double square = lat * lat + std::cos(lat1 * degree) * std::cos(lat2 * degree) * lon * lon;
    return 2 * std::asin(std::sqrt(std::min(1.0, square))) / degree;
}

double azimuth(double lat1, double lon1, double lat2, double lon2)
{
    if (lat1 == lat2 && lon1 == lon2)
        return 0;
    const double turned = (lon2 - lon1) * degree;
    const double east = std::sin(turned) * std::cos(lat2 * degree);
    const double north = std::cos(lat1 * degree) * std::sin(lat2 * degree) -
                         std::sin(lat1 * degree) * std::cos(lat2 * degree) * std::cos(turned);
    const double angle = std::atan2(east, north) / degree;
    return angle < 0 ? angle + 360 : angle;
}

// By the C library, whose extended patterns mean the same as long as they are simple.
bool found(const std::string &s, const std::string &pattern)
{
    struct Compiled {
        explicit Compiled(const std::string &text)
        {
            if (regcomp(&regex, text.c_str(), REG_EXTENDED | REG_NOSUB) != 0)
                throw std::runtime_error("no pattern: " + text);
        }
        ~Compiled() { regfree(&regex); }
        Compiled(const Compiled &) = delete;
        Compiled &operator=(const Compiled &) = delete;
        regex_t regex{};
    };
    static std::map<std::string, Compiled> compiled;
    const auto at = compiled.try_emplace(pattern, pattern).first;
    return regexec(&at->second.regex, s.c_str(), 0, nullptr, 0) == 0;
}

std::tm calendar(double time)
{
    const auto seconds = static_cast<std::time_t>(std::floor(time));
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return parts;
}

long long partOfTime(double time, const std::string &part)
{
    const std::tm parts = calendar(time);
    const std::map<std::string, int> values = {
        {"year", parts.tm_year + 1900},
        {"month", parts.tm_mon + 1},
        {"day", parts.tm_mday},
        {"hour", parts.tm_hour},
        {"minute", parts.tm_min},
        {"second", parts.tm_sec},
        {"yearday", (parts.tm_year + 1900) * 1000 + parts.tm_yday + 1},
    };
    return values.at(part);
}

std::string writtenTime(double time, const std::string &format)
{
    const std::tm parts = calendar(time);
    char written[100];
    return {written, std::strftime(written, sizeof written, format.c_str(), &parts)};
}

// All of them are null where an argument is.
using Function = void (*)(sqlite3_context *, Arguments);

struct FunctionRow {
    const char *name;
    int arguments;
    Function call;
};

const FunctionRow functions[] = {
    {"o_pow", 2, [](auto *context, Arguments a) { answer(context, std::pow(number(a[0]), number(a[1]))); }},
    {"o_finite", 1, [](auto *context, Arguments a) { answer(context, number(a[0])); }},
    {"o_exp", 1, [](auto *context, Arguments a) { answer(context, std::exp(number(a[0]))); }},
    {"o_log", 1,
     [](auto *context, Arguments a) { answer(context, number(a[0]) > 0 ? std::log(number(a[0])) : NAN); }},
    {"o_log10", 1,
     [](auto *context, Arguments a) { answer(context, number(a[0]) > 0 ? std::log10(number(a[0])) : NAN); }},
    {"o_sin", 1, [](auto *context, Arguments a) { answer(context, std::sin(number(a[0]))); }},
    {"o_cos", 1, [](auto *context, Arguments a) { answer(context, std::cos(number(a[0]))); }},
    {"o_tan", 1, [](auto *context, Arguments a) { answer(context, std::tan(number(a[0]))); }},
    {"o_asin", 1, [](auto *context, Arguments a) { answer(context, std::asin(number(a[0]))); }},
    {"o_acos", 1, [](auto *context, Arguments a) { answer(context, std::acos(number(a[0]))); }},
    {"o_atan", 1, [](auto *context, Arguments a) { answer(context, std::atan(number(a[0]))); }},
    {"o_atan2", 2,
     [](auto *context, Arguments a) { answer(context, std::atan2(number(a[0]), number(a[1]))); }},
    {"o_deg2km", 1, [](auto *context, Arguments a) { answer(context, number(a[0]) * kilometresPerDegree); }},
    {"o_km2deg", 1, [](auto *context, Arguments a) { answer(context, number(a[0]) / kilometresPerDegree); }},
    {"o_distance", 4,
     [](auto *context, Arguments a) {
         answer(context, distance(number(a[0]), number(a[1]), number(a[2]), number(a[3])));
     }},
    {"o_azimuth", 4,
     [](auto *context, Arguments a) {
         answer(context, azimuth(number(a[0]), number(a[1]), number(a[2]), number(a[3])));
     }},
    {"o_found", 2,
     [](auto *context, Arguments a) {
         sqlite3_result_int(context, found(withoutBlanksAtEnd(text(a[0])), text(a[1])) ? 1 : 0);
     }},
    // A text as a number, null where it is none.
    {"o_number", 1,
     [](auto *context, Arguments a) {
         const std::string written = text(a[0]);
         char *end = nullptr;
         const double value = std::strtod(written.c_str(), &end);
         while (*end == ' ')
             ++end;
         if (end == written.c_str() || *end != '\0' ||
             written.find_first_of("0123456789") == std::string::npos)
             sqlite3_result_null(context);
         else
             sqlite3_result_double(context, value);
     }},
    {"o_part", 2,
     [](auto *context, Arguments a) { sqlite3_result_int64(context, partOfTime(number(a[0]), text(a[1]))); }},
    {"o_strtime", 2,
     [](auto *context, Arguments a) {
         const std::string written = writtenTime(number(a[0]), text(a[1]));
         sqlite3_result_text(context, written.c_str(), -1, SQLITE_TRANSIENT);
     }},
};

void called(sqlite3_context *context, int count, Arguments arguments)
{
    for (int i = 0; i < count; ++i)
        if (sqlite3_value_type(arguments[i]) == SQLITE_NULL)
            return sqlite3_result_null(context);
    static_cast<const FunctionRow *>(sqlite3_user_data(context))->call(context, arguments);
}

} // namespace

void addFunctions(sqlite3 *database)
{
    for (const FunctionRow &row : functions)
        if (sqlite3_create_function(database, row.name, row.arguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                    const_cast<FunctionRow *>(&row), called, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("no SQLite function ") + row.name);
}
