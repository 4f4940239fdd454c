#include "table/field_value.h"

#include <orvane/util.h>

#include <charconv>
#include <cmath>

namespace orvane {

namespace {

// from_chars takes no plus sign; "+-1" stays wrong.
std::string_view without_plus(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    return text;
}

std::optional<std::array<std::int64_t, 4>> decode_dbptr(std::string_view text)
{
    std::array<std::int64_t, 4> indexes{};
    for (std::int64_t &index : indexes) {
        text = trimmed(text);
        const auto number = decode_integer(text.substr(0, text.find(' ')));
        if (!number)
            return std::nullopt;
        index = *number;
        text = text.find(' ') == std::string_view::npos ? std::string_view() : text.substr(text.find(' '));
    }
    return trimmed(text).empty() ? std::optional(indexes) : std::nullopt;
}

} // namespace

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string_view trimmed_right(std::string_view text)
{
    const auto last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::optional<std::int64_t> decode_integer(std::string_view text)
{
    text = without_plus(trimmed(text));
    std::int64_t value = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::optional<double> decode_real(std::string_view text)
{
    text = without_plus(trimmed(text));
    double value = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<double> decode_time(std::string_view text)
{
    if (const auto number = decode_real(text))
        return number;
    const std::string words(trimmed(text));
    double time = 0;
    return is_epoch_string(words.c_str(), &time) ? std::optional(time) : std::nullopt;
}

std::optional<FieldValue> decode_field(const Attribute &attribute, std::string_view text)
{
    FieldValue value;
    value.type = attribute.type;
    switch (attribute.type) {
    case FieldType::Boolean:
    case FieldType::Integer:
    case FieldType::Yearday: {
        const auto integer = decode_integer(text);
        if (!integer)
            return std::nullopt;
        if (attribute.type == FieldType::Boolean && *integer != 0 && *integer != 1 &&
            *integer != attribute.null_integer)
            return std::nullopt;
        value.integer = *integer;
        return value;
    }
    case FieldType::Real:
    case FieldType::Time: {
        const auto real = attribute.type == FieldType::Time ? decode_time(text) : decode_real(text);
        if (!real)
            return std::nullopt;
        value.real = *real;
        return value;
    }
    case FieldType::String:
        value.text = trimmed_right(text);
        return value;
    case FieldType::Dbptr:
        if (const auto dbptr = decode_dbptr(text)) {
            value.dbptr = *dbptr;
            return value;
        }
        if (!is_null_field(attribute, text))
            return std::nullopt;
        value.dbptr.fill(-102); // the null of a pointer points to nothing
        return value;
    }
    return std::nullopt;
}

bool is_null_field(const Attribute &attribute, std::string_view text)
{
    if (is_integer(attribute.type)) {
        const auto value = decode_integer(text);
        return value && *value == attribute.null_integer;
    }
    if (is_real(attribute.type)) {
        const auto value = attribute.type == FieldType::Time ? decode_time(text) : decode_real(text);
        return value && *value == attribute.null_real;
    }
    if (attribute.type == FieldType::Dbptr)
        return trimmed(text) == trimmed(attribute.null);
    return trimmed_right(text) == trimmed_right(attribute.null);
}

} // namespace orvane
