#include "schema/attribute_reader.h"

#include "base/concat.h"
#include "table/field_value.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace orvane {

namespace {

constexpr std::int64_t max_width = 32767;

struct TypeRow {
    FieldType type;
    std::string_view conversions; // which conversions print values of the type
};
constexpr std::array type_rows{
    TypeRow{FieldType::Boolean, "d"}, TypeRow{FieldType::Integer, "d"}, TypeRow{FieldType::Real, "efg"},
    TypeRow{FieldType::Time, "efg"},  TypeRow{FieldType::Yearday, "d"}, TypeRow{FieldType::String, "s"},
    TypeRow{FieldType::Dbptr, "s"},
};

const TypeRow *read_type(const ParameterMapping &mapping)
{
    const auto text = mapping.text("type");
    if (!text)
        return nullptr;
    std::vector<std::string_view> names;
    for (const TypeRow &row : type_rows) {
        if (type_name(row.type) == text->text)
            return &row;
        names.push_back(type_name(row.type));
    }
    mapping.note(text->place, concat(mapping.what(), ": unknown type '", text->text, "', expected one of ",
                                     joined(names)));
    return nullptr;
}

std::int64_t read_width(const ParameterMapping &mapping)
{
    const auto text = mapping.text("width");
    if (!text)
        return 0;
    std::int64_t width = 0;
    const char *end = text->text.data() + text->text.size();
    const auto [stop, error] = std::from_chars(text->text.data(), end, width);
    if (error == std::errc() && stop == end && width >= 1 && width <= max_width)
        return width;
    mapping.note(text->place, concat(mapping.what(), ": width '", text->text,
                                     "' is not a whole number from 1 to ", max_width));
    return 0;
}

// 0 as width and null as type stand for those that could not be read.
void read_format(const ParameterMapping &mapping, const TypeRow *type, Attribute &attribute)
{
    const auto text = mapping.text("format");
    if (!text)
        return;
    attribute.format = text->text;
    const auto format = parse_field_format(text->text);
    if (!format) {
        mapping.note(text->place, concat(mapping.what(), ": format '", text->text,
                                         "' is not one C conversion d, e, f, g or s with flags, width and "
                                         "precision, and without length letters"));
        return;
    }
    attribute.parsed_format = *format;
    if (type && type->conversions.find(format->conversion) == std::string_view::npos)
        mapping.note(text->place, concat(mapping.what(), ": format '", text->text, "' does not print type ",
                                         type_name(type->type), ", whose conversion is ",
                                         type->conversions == "efg" ? "e, f or g" : type->conversions));
    if (attribute.width > 0 && format->width > attribute.width)
        mapping.note(text->place, concat(mapping.what(), ": format '", text->text, "' prints ", format->width,
                                         " bytes, the field is ", attribute.width, " wide"));
    else if (attribute.width > 0 && format->conversion == 's' && format->precision > attribute.width)
        mapping.note(text->place,
                     concat(mapping.what(), ": format '", text->text, "' prints up to ", format->precision,
                            " bytes, the field is ", attribute.width, " wide"));
}

void read_null(const ParameterMapping &mapping, const TypeRow *type, Attribute &attribute)
{
    const auto text = mapping.text("null");
    if (!text)
        return;
    attribute.null = text->text;
    if (attribute.width > 0 && static_cast<std::int64_t>(text->text.size()) > attribute.width) {
        mapping.note(text->place, concat(mapping.what(), ": null '", text->text, "' has ", text->text.size(),
                                         " bytes, the field is ", attribute.width, " wide"));
        return;
    }
    if (text->text.find('\n') != std::string::npos) {
        mapping.note(text->place, concat(mapping.what(), ": null contains a line feed"));
        return;
    }
    if (!type || !is_number(type->type))
        return;
    const auto value = is_integer(type->type) ? decode_integer(text->text) : std::nullopt;
    const auto real = is_real(type->type) ? decode_real(text->text) : std::nullopt;
    if (!value && !real) {
        mapping.note(text->place, concat(mapping.what(), ": null '", text->text, "' is not a value of type ",
                                         type_name(type->type)));
        return;
    }
    attribute.null_integer = value.value_or(0);
    attribute.null_real = real.value_or(0);
}

// A null that its own format prints wider than the field could never be written. A format that is too wide by
// itself has been noted already.
void check_printed_null(const ParameterMapping &mapping, const TypeRow *type, const Attribute &attribute)
{
    if (!type || !is_number(type->type) || attribute.width == 0 || attribute.format.empty() ||
        attribute.parsed_format.width > attribute.width || attribute.null.empty() ||
        type->conversions.find(attribute.parsed_format.conversion) == std::string::npos)
        return;
    const std::string printed = is_integer(type->type)
                                    ? print_integer(attribute.parsed_format, attribute.null_integer)
                                    : print_real(attribute.parsed_format, attribute.null_real);
    if (static_cast<std::int64_t>(printed.size()) > attribute.width)
        mapping.note(mapping.value_place("format"),
                     concat(mapping.what(), ": format '", attribute.format, "' prints the null as '", printed,
                            "', ", printed.size(), " bytes where the field is ", attribute.width, " wide"));
}

} // namespace

bool is_name(std::string_view text)
{
    const auto is_letter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    const auto is_name_char = [&](char c) { return is_letter(c) || (c >= '0' && c <= '9'); };
    return !text.empty() && is_letter(text.front()) && std::all_of(text.begin(), text.end(), is_name_char);
}

Attribute read_attribute(const std::string &name, const ParameterMapping &mapping)
{
    mapping.refuse_other_keys({"type", "width", "format", "null", "range", "units", "description", "detail"});
    for (const char *key : {"type", "width", "format", "null"})
        mapping.require(key);
    Attribute attribute;
    attribute.name = name;
    const TypeRow *type = read_type(mapping);
    if (type)
        attribute.type = type->type;
    attribute.width = read_width(mapping);
    read_format(mapping, type, attribute);
    read_null(mapping, type, attribute);
    check_printed_null(mapping, type, attribute);
    if (const auto range = mapping.text("range")) {
        attribute.range = range->text;
        if (range->text.find_first_not_of(" \t\n") == std::string::npos)
            mapping.note(range->place, concat(mapping.what(), ": the range is empty"));
    }
    attribute.units = mapping.text_or_empty("units");
    attribute.description = mapping.text_or_empty("description");
    attribute.detail = mapping.text_or_empty("detail");
    attribute.width = std::max<std::int64_t>(attribute.width, 1);
    return attribute;
}

} // namespace orvane
