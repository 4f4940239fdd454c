#include "edit/field_text.h"

#include "base/concat.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace orvane {

namespace {

// What messages show of a text that is refused.
std::string shown(std::string_view text)
{
    constexpr std::size_t longest = 80;
    std::string out = "'";
    for (const char c : text.substr(0, longest))
        out += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? '?' : c;
    return out + (text.size() > longest ? "…'" : "'");
}

std::string shortest(double number)
{
    char digits[32];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), number);
    return error == std::errc() ? std::string(digits, end) : std::string();
}

std::string shown(const FieldValue &value)
{
    switch (value.type) {
    case FieldType::Boolean:
    case FieldType::Integer:
    case FieldType::Yearday:
        return std::to_string(value.integer);
    case FieldType::Real:
    case FieldType::Time:
        return shortest(value.real);
    case FieldType::String:
        return shown(value.text);
    case FieldType::Dbptr:
        return concat("[", value.dbptr[0], ", ", value.dbptr[1], ", ", value.dbptr[2], ", ", value.dbptr[3],
                      "]");
    }
    return {};
}

std::string_view described(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return "0 or 1";
    case FieldType::Integer:
        return "a whole number";
    case FieldType::Yearday:
        return "a day as yyyyddd";
    case FieldType::Real:
        return "a number";
    case FieldType::Time:
        return "epoch seconds or a date";
    case FieldType::String:
        return "a text";
    case FieldType::Dbptr:
        return "a pointer of four indexes";
    }
    return {};
}

Status refused(const Attribute &attribute, std::string_view value, std::string_view why)
{
    return Status(Code::Value, concat("field ", attribute.name, ": ", value, " ", why));
}

Status of_another_type(const Attribute &attribute, std::string_view value)
{
    return refused(attribute, value, concat("is not ", described(attribute.type)));
}

// ---- Values of other types -----------------------------------------------------------------------

std::optional<std::int64_t> whole_number(const FieldValue &value)
{
    if (is_integer(value.type))
        return value.integer;
    constexpr double beyond = 9.2e18; // what follows is whole numbers within the type
    if (is_real(value.type) && std::abs(value.real) < beyond && value.real == std::floor(value.real))
        return static_cast<std::int64_t>(value.real);
    return value.type == FieldType::String ? decode_integer(value.text) : std::nullopt;
}

std::optional<double> number(const Attribute &attribute, const FieldValue &value)
{
    if (is_real(value.type))
        return std::isfinite(value.real) ? std::optional(value.real) : std::nullopt;
    if (is_integer(value.type)) {
        constexpr std::int64_t exact = std::int64_t{1} << 53;
        const bool is_exact = value.integer >= -exact && value.integer <= exact;
        return is_exact ? std::optional(static_cast<double>(value.integer)) : std::nullopt;
    }
    if (value.type != FieldType::String)
        return std::nullopt;
    return attribute.type == FieldType::Time ? decode_time(value.text) : decode_real(value.text);
}

std::optional<std::string> plain_text(const FieldValue &value)
{
    if (value.type == FieldType::String)
        return std::string(trimmed_right(value.text));
    if (is_integer(value.type))
        return std::to_string(value.integer);
    return is_real(value.type) && std::isfinite(value.real) ? std::optional(shortest(value.real))
                                                            : std::nullopt;
}

// ---- Printing ------------------------------------------------------------------------------------

std::string print(const Attribute &attribute, std::int64_t value)
{
    switch (attribute.parsed_format.conversion) {
    case 'd':
        return print_integer(attribute.parsed_format, value);
    case 's':
        return std::to_string(value);
    default:
        return print_real(attribute.parsed_format, static_cast<double>(value));
    }
}

std::string print(const Attribute &attribute, double value)
{
    switch (attribute.parsed_format.conversion) {
    case 'd':
        return print_integer(attribute.parsed_format, std::llround(value));
    case 's':
        return shortest(value);
    default:
        return print_real(attribute.parsed_format, value);
    }
}

Result<std::string> to_the_right(const Attribute &attribute, std::string_view printed)
{
    const std::string_view text = trimmed(printed);
    const auto width = static_cast<std::size_t>(attribute.width);
    if (text.size() > width)
        return refused(attribute, shown(text),
                       concat("is ", text.size(), " characters wide, the field has ", width));
    return std::string(width - text.size(), ' ').append(text);
}

Result<std::string> text_of_integer(const Attribute &attribute, const FieldValue &value)
{
    const auto whole = whole_number(value);
    if (!whole)
        return of_another_type(attribute, shown(value));
    if (*whole == attribute.null_integer)
        return null_field(attribute);
    if (attribute.type == FieldType::Boolean && *whole != 0 && *whole != 1)
        return of_another_type(attribute, shown(value));
    if (attribute.type == FieldType::Yearday && !is_yearday(*whole))
        return of_another_type(attribute, shown(value));
    auto text = to_the_right(attribute, print(attribute, *whole));
    // A format for reals has not the digits of every integer.
    if (text.ok() && decode_integer(*text) != whole && decode_real(*text) != static_cast<double>(*whole))
        return refused(attribute, shown(value), concat("cannot be written as ", attribute.format));
    return text;
}

Result<std::string> text_of_real(const Attribute &attribute, const FieldValue &value)
{
    const auto real = number(attribute, value);
    if (!real)
        return of_another_type(attribute, shown(value));
    if (*real == attribute.null_real)
        return null_field(attribute);
    if (attribute.parsed_format.conversion == 'd' && (*real != std::floor(*real) || std::abs(*real) > 9.2e18))
        return refused(attribute, shown(value), concat("cannot be written as ", attribute.format));
    return to_the_right(attribute, print(attribute, *real));
}

Result<std::string> text_of_text(const Attribute &attribute, const FieldValue &value)
{
    auto text = plain_text(value);
    if (!text)
        return of_another_type(attribute, shown(value));
    if (Status characters = check_characters(*text, concat("field ", attribute.name)); !characters.ok())
        return characters;
    auto width = static_cast<std::size_t>(attribute.width);
    const int precision = attribute.parsed_format.precision; // of a text: the most bytes that it may have
    if (precision >= 0 && static_cast<std::size_t>(precision) < width)
        width = static_cast<std::size_t>(precision);
    if (text->size() > width)
        return refused(attribute, shown(*text),
                       concat("is ", text->size(), " bytes long, the field has room for ", width));
    text->resize(static_cast<std::size_t>(attribute.width), ' ');
    return *text;
}

Result<std::string> text_of_dbptr(const Attribute &attribute, const FieldValue &value)
{
    constexpr std::int64_t nothing = -102; // what the null of a pointer is read as
    std::optional<FieldValue> read;
    if (value.type == FieldType::Dbptr)
        read = value;
    else if (value.type == FieldType::String)
        read = decode_field(attribute, value.text);
    if (!read)
        return of_another_type(attribute, shown(value));
    if (read->dbptr == std::array{nothing, nothing, nothing, nothing})
        return null_field(attribute);
    return to_the_right(
        attribute, concat(read->dbptr[0], ' ', read->dbptr[1], ' ', read->dbptr[2], ' ', read->dbptr[3]));
}

// The length of the character that begins the text, or 0 where none does.
std::size_t character_length(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xc2 && first < 0xe0   ? 2
                               : first >= 0xe0 && first < 0xf0 ? 3
                               : first >= 0xf0 && first < 0xf5 ? 4
                                                               : 0;
    if (length == 0 || text.size() < length)
        return 0;
    for (std::size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xc0) != 0x80)
            return 0;
    // Written longer than need be, halves of pairs, beyond the last one.
    const unsigned second = byte(1);
    const bool wrong = (first == 0xe0 && second < 0xa0) || (first == 0xed && second >= 0xa0) ||
                       (first == 0xf0 && second < 0x90) || (first == 0xf4 && second >= 0x90);
    return wrong ? 0 : length;
}

} // namespace

bool is_yearday(std::int64_t number)
{
    const std::int64_t year = number / 1000;
    const std::int64_t day = number % 1000;
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return year >= 1 && year <= 9999 && day >= 1 && day <= (leap ? 366 : 365);
}

Status check_characters(std::string_view text, std::string_view of)
{
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = character_length(text.substr(at));
        const auto first = static_cast<unsigned char>(text[at]);
        if (length == 0)
            return Status(Code::Value, concat(of, ": byte ", at,
                                              " of the text does not begin a whole character of UTF-8"));
        const bool upper_control =
            length == 2 && first == 0xc2 && static_cast<unsigned char>(text[at + 1]) < 0xa0;
        if (first == '\n')
            return Status(Code::Value, concat(of, ": the text has a line feed, which would end the record"));
        if (first < 0x20 || first == 0x7f || upper_control)
            return Status(Code::Value, concat(of, ": the text has a control character at byte ", at));
        at += length;
    }
    return Status();
}

Status check_field_text(const Attribute &attribute, std::string_view text)
{
    if (Status characters = check_characters(text, concat("field ", attribute.name)); !characters.ok())
        return characters;
    if (is_null_field(attribute, text))
        return Status();
    const auto value = decode_field(attribute, text);
    if (!value || (attribute.type == FieldType::Yearday && !is_yearday(value->integer)))
        return of_another_type(attribute, shown(text));
    return Status();
}

Result<std::string> field_text(const Attribute &attribute, const FieldValue &value)
{
    if (is_integer(attribute.type))
        return text_of_integer(attribute, value);
    if (is_real(attribute.type))
        return text_of_real(attribute, value);
    return attribute.type == FieldType::String ? text_of_text(attribute, value)
                                               : text_of_dbptr(attribute, value);
}

} // namespace orvane
