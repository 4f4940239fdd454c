#include "expression/time_kernels.h"

#include <cstdlib>
#include <memory>

#include <orvane/util.h>

#include "expression/calendar.h"
#include "expression/kernel_map.h"

namespace orvane::expr {

namespace {

using Integer = std::int64_t;
using Text = std::string_view;

constexpr const char *default_format = "%D (%j) %H:%M:%S.%u %Z";

template <Integer CivilTime::*part>
bool civil_part(Integer &out, double time)
{
    const auto civil = civil_time(time);
    if (civil)
        out = (*civil).*part;
    return civil.has_value();
}

bool yearday(Integer &out, double time)
{
    const auto day = yearday_of(time);
    out = day.value_or(0);
    return day.has_value();
}

double same(double time)
{
    return time;
}

bool shown(TextArena &arena, Text &out, double time, const char *format)
{
    if (!civil_time(time))
        return false;
    const std::unique_ptr<char, void (*)(void *)> text(epoch2str(time, format), std::free);
    if (!text || Text(text.get()).size() > TextArena::max_text)
        return false;
    out = arena.copy(text.get());
    return !arena.exhausted();
}

} // namespace

void time_same(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    real_function<same, double>(context, arguments, selection, out);
}

void time_yearday(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<yearday, Integer, double>(context, arguments, selection, out);
}

void time_year(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::year>, Integer, double>(context, arguments, selection, out);
}

void time_month(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::month>, Integer, double>(context, arguments, selection, out);
}

void time_day(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::day>, Integer, double>(context, arguments, selection, out);
}

void time_hour(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::hour>, Integer, double>(context, arguments, selection, out);
}

void time_minute(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::minute>, Integer, double>(context, arguments, selection, out);
}

void time_second(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    mapped<civil_part<&CivilTime::second>, Integer, double>(context, arguments, selection, out);
}

void time_text(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    if (arguments.size() == 1)
        map_values<Text, double>(arguments, selection, out, [&](Text &value, double time) {
            return shown(context.arena, value, time, default_format);
        });
    else
        map_values<Text, double, Text>(arguments, selection, out, [&](Text &value, double time, Text format) {
            return shown(context.arena, value, time, std::string(format).c_str());
        });
}

} // namespace orvane::expr
