#include "expression/conversion_kernels.h"

#include "expression/calendar.h"
#include "expression/kernel_map.h"
#include "expression/number_text.h"
#include "expression/written_span.h"

namespace orvane::expr {

namespace {

using Integer = std::int64_t;
using Text = std::string_view;

template <typename Out>
bool taken(const std::optional<Out> &from, Out &out)
{
    if (from)
        out = *from;
    return from.has_value();
}

} // namespace

void integer_to_real(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Integer>(arguments, selection, out, [](double &value, Integer integer) {
        value = static_cast<double>(integer);
        return true;
    });
}

void integer_to_text(KernelContext &context, std::span<const Vector> arguments, Selection selection,
                     Vector &out)
{
    convert_values<Text, Integer>(arguments, selection, out, [&](Text &value, Integer integer) {
        value = context.arena.copy(std::to_string(integer));
        return !value.empty();
    });
}

void real_to_text(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<Text, double>(arguments, selection, out, [&](Text &value, double number) {
        value = context.arena.copy(number_text(number));
        return std::isfinite(number) && !value.empty();
    });
}

void yearday_to_begin(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Integer>(arguments, selection, out, [](double &value, Integer yearday) {
        return taken(begin_of_yearday(yearday), value);
    });
}

void yearday_to_end(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Integer>(arguments, selection, out, [](double &value, Integer yearday) {
        const bool has = taken(begin_of_yearday(yearday), value);
        value += seconds_of_day;
        return has;
    });
}

void text_to_real(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Text>(arguments, selection, out, [](double &value, Text text) {
        const auto number = read_number(text);
        if (number)
            value = number->real;
        return number.has_value();
    });
}

void text_to_time(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Text>(arguments, selection, out, [](double &value, Text text) {
        const auto span = written_span(text);
        if (span)
            value = span->begin;
        return span.has_value();
    });
}

void text_to_time_end(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<double, Text>(arguments, selection, out, [](double &value, Text text) {
        const auto span = written_span(text);
        if (span)
            value = span->end;
        return span.has_value();
    });
}

std::optional<std::int64_t> read_yearday(std::string_view text)
{
    // A number first, so that the null of the field can be asked for, though it is no day.
    const auto number = read_number(text);
    const auto span = written_span(text);
    if (number && number->whole &&
        (!span || span->begin == number->real || !yearday_of(span->begin) ||
         number->integer == *yearday_of(span->begin)))
        return number->integer;
    return span ? yearday_of(span->begin) : std::nullopt;
}

void text_to_yearday(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    convert_values<Integer, Text>(arguments, selection, out,
                                  [](Integer &value, Text text) { return taken(read_yearday(text), value); });
}

} // namespace orvane::expr
