// Rows as a JSON array of objects, made from records in full width as they come out of the library.
#pragma once

#include "record_values.h"

#include <cstdio>
#include <string>
#include <vector>

namespace ovdb {

class JsonRows
{
public:
    JsonRows(std::vector<Column> columns, std::FILE *out);

    // As RecordStream::open.
    std::FILE *open() { return stream_.open(); }
    // Ends the array. False where the stream can't be written, with errno telling why.
    bool finish();

    // Tells of fields that held no value of their type and were written as null.
    void tell_unreadable() const;

private:
    bool take(std::string_view records);
    void append_row(const char *record);
    void append_value(FieldDecoder &field, std::string_view text);
    bool write();

    std::FILE *out_;
    std::vector<FieldDecoder> fields_;
    std::vector<std::string> begins_; // what stands before each value: {"lat":
    RecordStream stream_;
    std::string text_;
    bool any_ = false;
};

} // namespace ovdb
