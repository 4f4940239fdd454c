// Fields of some records at a time, decoded and forgotten again: for tables whose columns have no room in
// memory.
#pragma once

#include "column/column_decoder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace orvane {

// Of one thread; several may read one file.
class RecordStream
{
public:
    // The records' file and name have to outlive the stream.
    RecordStream(const RecordSpan &records, std::span<const RelationField> fields);

    // At most so many records are read at a time.
    std::int64_t most() const { return most_; }
    // Decodes the records [begin, end). Answers false when the file has become shorter.
    Result<bool> read(std::int64_t begin, std::int64_t end);
    // A field of the records that were read last, the first of them at 0. Its nulls are not counted.
    const Column &column(std::size_t field) const { return *columns_[field]; }
    // Fields without a value so far.
    std::int64_t unreadable(std::size_t field) const
    {
        return unreadable_[field] + decoders_[field].unreadable();
    }

private:
    void start_texts(std::size_t field);

    const RecordSpan records_;
    const std::vector<RelationField> fields_;
    const std::int64_t most_;
    std::vector<char> buffer_;
    std::vector<std::shared_ptr<Column>> columns_;
    std::vector<std::shared_ptr<TextEntries>> texts_; // of the columns; null for numbers
    std::vector<FieldDecoder> decoders_;
    std::vector<std::int64_t> unreadable_; // of decoders that were let go
};

} // namespace orvane
