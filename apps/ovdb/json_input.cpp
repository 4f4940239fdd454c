#include "json_input.h"

#include "input_lines.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace ovdb {

namespace {

using Json = nlohmann::json;

// Takes an object of values by field. Numbers are kept with the digits that they have in the text.
class RowOfObject : public nlohmann::json_sax<Json>
{
public:
    RowOfObject(const std::vector<Column> &columns, Row &row) : columns_(columns), row_(row) {}

    bool null() override
    {
        check_place();
        return true;
    }
    bool boolean(bool value) override
    {
        check_place();
        if (columns_[column_].type != dbBOOLEAN)
            fail(std::string(value ? "true" : "false") + " is no value of it");
        return take(value ? "1" : "0");
    }
    bool number_integer(number_integer_t value) override { return take(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return take(std::to_string(value)); }
    bool number_float(number_float_t, const string_t &digits) override { return take(digits); }
    bool string(string_t &text) override { return take(text); }
    bool binary(binary_t &) override { return false; } // JSON text has none

    bool start_object(std::size_t) override
    {
        if (in_object_)
            fail("an object is no value");
        in_object_ = true;
        return true;
    }
    bool key(string_t &name) override
    {
        column_ = column_place(columns_, name, row_.line);
        if (std::find(seen_.begin(), seen_.end(), column_) != seen_.end())
            fail("it stands there twice");
        seen_.push_back(column_);
        return true;
    }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override
    {
        check_place();
        fail("an array is no value");
    }
    bool end_array() override { return true; }

    bool parse_error(std::size_t position, const std::string &, const Json::exception &) override
    {
        throw BadLine(row_.line, "byte " + std::to_string(position) + ": this is no JSON");
    }

private:
    [[noreturn]] void fail(const std::string &reason) const
    {
        throw BadLine(row_.line, "field " + columns_[column_].name + ": " + reason);
    }
    void check_place() const
    {
        if (!in_object_)
            throw BadLine(row_.line, "an object is expected, {\"FIELD\":VALUE,...}");
    }
    bool take(std::string text)
    {
        check_place();
        row_.cells.push_back(Cell{column_, std::move(text)});
        return true;
    }

    const std::vector<Column> &columns_;
    Row &row_;
    bool in_object_ = false;
    std::size_t column_ = 0;
    std::vector<std::size_t> seen_;
};

class JsonLines : public RowInput
{
public:
    JsonLines(std::FILE *file, std::vector<Column> columns) : lines_(file), columns_(std::move(columns)) {}

    bool next(Row &row) override
    {
        std::string line;
        do {
            row.line = lines_.number();
            if (!lines_.next_line(line)) {
                if (in_array_)
                    throw BadLine(row.line, "the array is not closed; the end is missing");
                return false;
            }
            line.erase(line.find_last_not_of(" \t") + 1);
        } while (line.empty() || is_bracket(line));
        if (ended_)
            throw BadLine(row.line, "something stands behind the end of the array");
        if (in_array_ && line.ends_with(','))
            line.pop_back();
        row.cells.clear();
        RowOfObject object(columns_, row);
        Json::sax_parse(line, &object);
        any_ = true;
        return true;
    }

private:
    bool is_bracket(const std::string &line)
    {
        if (line == "[" && !any_ && !in_array_ && !ended_)
            return in_array_ = true;
        if (line != "]" || !in_array_)
            return false;
        in_array_ = false;
        return ended_ = true;
    }

    InputLines lines_;
    std::vector<Column> columns_;
    bool any_ = false;
    bool in_array_ = false;
    bool ended_ = false;
};

} // namespace

std::unique_ptr<RowInput> json_rows(std::FILE *file, std::vector<Column> columns)
{
    return std::make_unique<JsonLines>(file, std::move(columns));
}

} // namespace ovdb
