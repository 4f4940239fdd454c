#include "json_rows.h"

#include "json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace ovdb {

namespace {

constexpr std::size_t long_enough = 1 << 20;

std::string_view trimmed_right(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string_view trimmed(std::string_view text)
{
    text = text.substr(0, text.find_last_not_of(" \t") + 1);
    const auto first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// A number that is all of the text; a plus sign before it is allowed, as in the tables.
template <typename Number>
std::optional<Number> number(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && stop == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<double> real(std::string_view text)
{
    const auto value = number<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

// Seconds, or a date in words.
std::optional<double> time(std::string_view text)
{
    if (const auto value = real(text))
        return value;
    double value = 0;
    return is_epoch_string(std::string(text).c_str(), &value) ? std::optional(value) : std::nullopt;
}

// The number as it stands, if JSON would write it so, else in its shortest form.
template <typename Number>
void append_number(std::string_view text, Number value, std::string &out)
{
    if (is_json_number(text)) {
        out += text;
        return;
    }
    char digits[400]; // a double without an exponent
    const auto end = std::is_integral_v<Number>
                         ? std::to_chars(digits, digits + sizeof digits, value)
                         : std::to_chars(digits, digits + sizeof digits, static_cast<double>(value),
                                         std::chars_format::fixed);
    out.append(digits, end.ptr);
}

} // namespace

JsonRows::JsonRows(std::vector<Column> columns, std::FILE *out) : out_(out)
{
    for (Column &column : columns) {
        Field field;
        field.kind = column.type == dbREAL   ? Kind::Real
                     : column.type == dbTIME ? Kind::Time
                     : column.type == dbBOOLEAN || column.type == dbINTEGER || column.type == dbYEARDAY
                         ? Kind::Integer
                         : Kind::Text;
        field.begin = fields_.empty() ? "{" : ",";
        append_json_string(column.name, field.begin);
        field.begin += ':';
        field.null_text = trimmed_right(column.null);
        field.null_integer = number<std::int64_t>(trimmed(column.null)).value_or(0);
        field.null_real = time(trimmed(column.null)).value_or(0);
        record_size_ += column.width;
        field.column = std::move(column);
        fields_.push_back(std::move(field));
    }
}

std::FILE *JsonRows::open()
{
    cookie_io_functions_t functions{};
    functions.write = [](void *rows, const char *bytes, std::size_t size) -> ssize_t {
        return static_cast<JsonRows *>(rows)->take({bytes, size}) ? static_cast<ssize_t>(size) : 0;
    };
    return fopencookie(this, "w", functions);
}

bool JsonRows::take(std::string_view bytes)
{
    if (!partial_.empty()) {
        const std::size_t missing = std::min(record_size_ - partial_.size(), bytes.size());
        partial_.append(bytes.substr(0, missing));
        bytes.remove_prefix(missing);
        if (partial_.size() < record_size_)
            return true;
        append_row(partial_.data());
        partial_.clear();
    }
    for (; bytes.size() >= record_size_; bytes.remove_prefix(record_size_)) {
        append_row(bytes.data());
        if (text_.size() > long_enough && !write())
            return false;
    }
    partial_ = bytes;
    return write();
}

void JsonRows::append_row(const char *record)
{
    text_ += any_ ? ",\n" : "[\n";
    any_ = true;
    for (Field &field : fields_) {
        text_ += field.begin;
        append_value(field, {record, field.column.width});
        record += field.column.width;
    }
    text_ += '}';
}

void JsonRows::append_value(Field &field, std::string_view text)
{
    if (field.kind == Kind::Text) {
        text = trimmed_right(text);
        if (text == field.null_text)
            text_ += "null";
        else
            append_json_string(text, text_);
        return;
    }
    text = trimmed(text);
    if (field.kind == Kind::Integer ? append_integer(field, text) : append_real(field, text))
        return;
    text_ += "null";
    ++field.unreadable;
}

bool JsonRows::append_integer(const Field &field, std::string_view text)
{
    const auto value = number<std::int64_t>(text);
    if (!value)
        return false;
    if (*value == field.null_integer)
        text_ += "null";
    else if (field.column.type == dbBOOLEAN && *value != 0 && *value != 1)
        return false;
    else
        append_number(text, *value, text_);
    return true;
}

bool JsonRows::append_real(const Field &field, std::string_view text)
{
    const auto value = field.kind == Kind::Time ? time(text) : real(text);
    if (!value)
        return false;
    if (*value == field.null_real)
        text_ += "null";
    else
        append_number(text, *value, text_);
    return true;
}

bool JsonRows::write()
{
    const bool written =
        std::fwrite(text_.data(), 1, text_.size(), out_) == text_.size() && std::fflush(out_) == 0;
    text_.clear();
    return written;
}

bool JsonRows::finish()
{
    text_ += any_ ? "\n]\n" : "[]\n";
    return write();
}

void JsonRows::tell_unreadable() const
{
    static constexpr const char *kinds[] = {"whole numbers", "numbers", "times", "texts"};
    for (const Field &field : fields_)
        if (field.unreadable > 0)
            note("field " + field.column.name + ": " + std::to_string(field.unreadable) + " values are no " +
                 kinds[static_cast<int>(field.kind)] + " and are written as null");
}

} // namespace ovdb
