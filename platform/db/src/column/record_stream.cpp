#include "column/record_stream.h"

#include "table/field_value.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::int64_t buffer_bytes = 256 << 10;
constexpr std::int64_t max_records = 2048; // a batch
constexpr std::size_t max_text_bytes = 8 << 20;

} // namespace

RecordStream::RecordStream(const RecordSpan &records, std::span<const RelationField> fields)
    : records_(records), fields_(fields.begin(), fields.end()),
      most_(std::clamp<std::int64_t>(buffer_bytes / records.record_size, 1, max_records)),
      texts_(fields.size()), unreadable_(fields.size())
{
    for (const RelationField &field : fields_)
        columns_.push_back(new_column(*field.attribute, most_));
    for (std::size_t field = 0; field < fields_.size(); ++field) {
        decoders_.emplace_back(fields_[field], records_.record_size, nullptr);
        start_texts(field);
    }
}

void RecordStream::start_texts(std::size_t field)
{
    Column &column = *columns_[field];
    if (column.storage() != ColumnStorage::Text)
        return;
    texts_[field] = std::make_shared<TextEntries>();
    column.null_code = texts_[field]->code_of(trimmed_right(fields_[field].attribute->null));
    column.codes.back() = column.null_code;
    column.texts = texts_[field];
    unreadable_[field] += decoders_[field].unreadable();
    decoders_[field] = FieldDecoder(fields_[field], records_.record_size, texts_[field].get());
}

Result<bool> RecordStream::read(std::int64_t begin, std::int64_t end)
{
    if (begin == end)
        return true;
    const auto read = read_records(records_, begin, end, buffer_);
    if (!read.ok() || !*read)
        return read;
    for (std::size_t field = 0; field < fields_.size(); ++field) {
        if (texts_[field] && texts_[field]->bytes() > max_text_bytes)
            start_texts(field);
        decoders_[field].decode(buffer_.data(), 0, end - begin, *columns_[field]);
    }
    return true;
}

} // namespace orvane
