// Rows as a JSON array of objects, made from records in full width as they come out of the library.
#pragma once

#include "columns.h"

#include <cstdio>
#include <string>
#include <vector>

namespace ovdb {

class JsonRows
{
public:
    JsonRows(std::vector<Column> columns, std::FILE *out);

    // A stream for dbselect of the columns with flag 0 and no separator, whose lines become objects. Close it
    // with fclose before the object goes; null where there is no memory.
    std::FILE *open();
    // Ends the array. False where the stream can't be written, with errno telling why.
    bool finish();

    // Tells of fields that held no value of their type and were written as null.
    void tell_unreadable() const;

private:
    enum class Kind { Integer, Real, Time, Text };
    struct Field {
        Column column;
        Kind kind;
        std::string begin; // what stands before the value: {"lat":
        std::int64_t null_integer = 0;
        double null_real = 0;
        std::string null_text;
        std::int64_t unreadable = 0;
    };

    bool take(std::string_view bytes);
    void append_row(const char *record);
    void append_value(Field &field, std::string_view text);
    bool append_integer(const Field &field, std::string_view text);
    bool append_real(const Field &field, std::string_view text);
    bool write();

    std::FILE *out_;
    std::vector<Field> fields_;
    std::size_t record_size_ = 1; // the line feed
    std::string partial_;         // of a record that is not there whole
    std::string text_;
    bool any_ = false;
};

} // namespace ovdb
