#include "record_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace ovdb {

namespace {

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

FieldDecoder::Kind kind_of(std::int64_t type)
{
    switch (type) {
    case dbREAL:
        return FieldDecoder::Kind::Real;
    case dbTIME:
        return FieldDecoder::Kind::Time;
    case dbBOOLEAN:
    case dbINTEGER:
    case dbYEARDAY:
        return FieldDecoder::Kind::Integer;
    default:
        return FieldDecoder::Kind::Text;
    }
}

} // namespace

FieldDecoder::FieldDecoder(Column column)
    : column_(std::move(column)), kind_(kind_of(column_.type)),
      null_integer_(number<std::int64_t>(trimmed(column_.null)).value_or(0)),
      null_real_(time(trimmed(column_.null)).value_or(0)), null_text_(trimmed_right(column_.null))
{
}

FieldDecoder::Value FieldDecoder::decode(std::string_view text)
{
    const Value value = decoded(text);
    unreadable_ += value.state == State::Unreadable ? 1 : 0;
    return value;
}

FieldDecoder::Value FieldDecoder::decoded(std::string_view text) const
{
    Value value;
    if (kind_ == Kind::Text) {
        value.text = trimmed_right(text);
        value.state = value.text == null_text_ ? State::Null : State::Value;
        return value;
    }
    value.text = trimmed(text);
    if (kind_ == Kind::Integer) {
        const auto integer = number<std::int64_t>(value.text);
        value.integer = integer.value_or(0);
        const bool is_null = integer && *integer == null_integer_;
        const bool is_flag = value.integer == 0 || value.integer == 1;
        if (!integer || (!is_null && column_.type == dbBOOLEAN && !is_flag))
            value.state = State::Unreadable;
        else if (is_null)
            value.state = State::Null;
        return value;
    }
    const auto number = kind_ == Kind::Time ? time(value.text) : real(value.text);
    value.real = number.value_or(0);
    value.state = !number ? State::Unreadable : *number == null_real_ ? State::Null : State::Value;
    return value;
}

void FieldDecoder::tell_unreadable(std::string_view written_as) const
{
    static constexpr const char *kinds[] = {"whole numbers", "numbers", "times", "texts"};
    if (unreadable_ > 0)
        note("field " + column_.name + ": " + std::to_string(unreadable_) + " values are no " +
             kinds[static_cast<int>(kind_)] + " and are written as " + std::string(written_as));
}

std::vector<FieldDecoder> decoders_of(std::vector<Column> columns)
{
    std::vector<FieldDecoder> decoders;
    for (Column &column : columns)
        decoders.emplace_back(std::move(column));
    return decoders;
}

// ---- The stream ----------------------------------------------------------------------------------

RecordStream::RecordStream(const std::vector<FieldDecoder> &fields, Take take) : take_(std::move(take))
{
    for (const FieldDecoder &field : fields)
        record_size_ += field.column().width;
}

std::FILE *RecordStream::open()
{
    cookie_io_functions_t functions{};
    functions.write = [](void *stream, const char *bytes, std::size_t size) -> ssize_t {
        return static_cast<RecordStream *>(stream)->receive({bytes, size}) ? static_cast<ssize_t>(size) : 0;
    };
    return fopencookie(this, "w", functions);
}

bool RecordStream::receive(std::string_view bytes)
{
    if (!partial_.empty()) {
        const std::size_t missing = std::min(record_size_ - partial_.size(), bytes.size());
        partial_.append(bytes.substr(0, missing));
        bytes.remove_prefix(missing);
        if (partial_.size() < record_size_)
            return true;
        if (!take_(partial_))
            return false;
        partial_.clear();
    }
    const std::size_t whole = bytes.size() - bytes.size() % record_size_;
    if (whole > 0 && !take_(bytes.substr(0, whole)))
        return false;
    partial_ = bytes.substr(whole);
    return true;
}

} // namespace ovdb
