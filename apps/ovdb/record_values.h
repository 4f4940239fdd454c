// Records as they come out of the library in full width, cut into the values of their fields.
#pragma once

#include "columns.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ovdb {

// A field of the records, and how its text is read.
class FieldDecoder
{
public:
    enum class Kind { Integer, Real, Time, Text };
    enum class State { Value, Null, Unreadable }; // the last: no value of the field's type

    struct Value {
        State state = State::Value;
        std::string_view text; // without the blanks around it; of a text, without those behind it
        std::int64_t integer = 0;
        double real = 0; // of a time, seconds since 1970
    };

    explicit FieldDecoder(Column column);

    const Column &column() const { return column_; }
    Kind kind() const { return kind_; }
    // The text is the field's in full width; the value borrows it. Counts what is unreadable.
    Value decode(std::string_view text);
    // Tells by a note how many values were unreadable, if any were; `written_as` is what stands for them.
    void tell_unreadable(std::string_view written_as) const;

private:
    Value decoded(std::string_view text) const;

    Column column_;
    Kind kind_;
    std::int64_t null_integer_ = 0;
    double null_real_ = 0;
    std::string null_text_;
    std::int64_t unreadable_ = 0;
};

std::vector<FieldDecoder> decoders_of(std::vector<Column> columns);

// A stream for dbselect of the fields with flag 0 and no separator, which passes whole records on.
class RecordStream
{
public:
    // Takes several records, each of `record_size()` bytes with its line feed. False where it can't, with
    // errno telling why.
    using Take = std::function<bool(std::string_view records)>;

    RecordStream(const std::vector<FieldDecoder> &fields, Take take);

    std::size_t record_size() const { return record_size_; }
    // Close it with fclose before the object goes; null where there is no memory.
    std::FILE *open();
    // What the stream does with bytes, for those who have them from elsewhere.
    bool receive(std::string_view bytes);

private:
    std::size_t record_size_ = 1; // the line feed
    Take take_;
    std::string partial_; // of a record that is not there whole
};

} // namespace ovdb
