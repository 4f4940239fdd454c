// Rows that come as text, in the forms in which 'select' writes them: each as values by field.
#pragma once

#include "columns.h"
#include "formats.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ovdb {

// A value for a field. Fields that a row says nothing of, or null, have none.
struct Cell {
    std::size_t column; // in the table's
    std::string text;
};

struct Row {
    std::int64_t line = 0; // where it begins, from 1 on
    std::vector<Cell> cells;
};

// A line that is none of its form.
class BadLine : public std::runtime_error
{
public:
    BadLine(std::int64_t line, const std::string &reason) : std::runtime_error(reason), line_(line) {}

    std::int64_t line() const { return line_; }

private:
    std::int64_t line_;
};

class RowInput
{
public:
    virtual ~RowInput() = default;
    // The next row; false behind the last. Throws BadLine.
    virtual bool next(Row &row) = 0;
};

// What the lines hold.
struct RowLayout {
    std::vector<Column> columns;     // of the table
    std::vector<std::string> fields; // of the lines, in order; empty: those of the line of names, or else all
    bool header;                     // whether a line of names comes first
};

// The place of the field of that name. Throws BadLine where there is none.
std::size_t column_place(const std::vector<Column> &columns, const std::string &name, std::int64_t line);

std::unique_ptr<RowInput> open_rows(std::FILE *file, const Format &format, RowLayout layout);

} // namespace ovdb
