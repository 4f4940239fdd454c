#include "json_rows.h"

#include "json_text.h"

#include <charconv>

namespace ovdb {

namespace {

constexpr std::size_t long_enough = 1 << 20;

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

JsonRows::JsonRows(std::vector<Column> columns, std::FILE *out)
    : out_(out), fields_(decoders_of(std::move(columns))),
      stream_(fields_, [this](std::string_view records) { return take(records); })
{
    for (const FieldDecoder &field : fields_) {
        std::string begin = begins_.empty() ? "{" : ",";
        append_json_string(field.column().name, begin);
        begins_.push_back(begin + ':');
    }
}

bool JsonRows::take(std::string_view records)
{
    for (; !records.empty(); records.remove_prefix(stream_.record_size())) {
        append_row(records.data());
        if (text_.size() > long_enough && !write())
            return false;
    }
    return write();
}

void JsonRows::append_row(const char *record)
{
    text_ += any_ ? ",\n" : "[\n";
    any_ = true;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const std::size_t width = fields_[i].column().width;
        text_ += begins_[i];
        append_value(fields_[i], {record, width});
        record += width;
    }
    text_ += '}';
}

void JsonRows::append_value(FieldDecoder &field, std::string_view text)
{
    const FieldDecoder::Value value = field.decode(text);
    if (value.state != FieldDecoder::State::Value)
        text_ += "null";
    else if (field.kind() == FieldDecoder::Kind::Text)
        append_json_string(value.text, text_);
    else if (field.kind() == FieldDecoder::Kind::Integer)
        append_number(value.text, value.integer, text_);
    else
        append_number(value.text, value.real, text_);
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
    for (const FieldDecoder &field : fields_)
        field.tell_unreadable("null");
}

} // namespace ovdb
