#include "row_input.h"

#include "input_lines.h"
#include "json_input.h"
#include "near_name.h"

#include <algorithm>

namespace ovdb {

namespace {

constexpr std::string_view blanks = " \t";

std::string trimmed(const std::string &text)
{
    const auto first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The columns of the lines as places among those of the table.
std::vector<std::size_t> places_of(const std::vector<std::string> &names, const std::vector<Column> &columns,
                                   std::int64_t line)
{
    std::vector<std::size_t> places;
    for (const std::string &name : names) {
        const std::size_t place = column_place(columns, name, line);
        if (std::find(places.begin(), places.end(), place) != places.end())
            throw BadLine(line, "the field " + name + " is named twice");
        places.push_back(place);
    }
    return places;
}

std::vector<std::size_t> all_places(const std::vector<Column> &columns)
{
    std::vector<std::size_t> places(columns.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        places[i] = i;
    return places;
}

// What csv, tsv and text have in common: lines of fields in one order, perhaps below a line of names.
class FieldLines : public RowInput
{
public:
    FieldLines(std::FILE *file, RowLayout layout) : lines_(file), layout_(std::move(layout)) {}

    bool next(Row &row) final
    {
        if (places_.empty())
            begin();
        row.cells.clear();
        row.line = lines_.number();
        std::vector<std::string> texts;
        if (!read_values(texts))
            return false;
        if (texts.size() != places_.size())
            throw BadLine(row.line, "the number of values is " + std::to_string(texts.size()) + ", " +
                                        std::to_string(places_.size()) + " is expected");
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const bool is_text = layout_.columns[places_[i]].type == dbSTRING;
            std::string text = is_text ? std::move(texts[i]) : trimmed(texts[i]);
            if (text.find_first_not_of(' ') != std::string::npos)
                row.cells.push_back(Cell{places_[i], std::move(text)});
        }
        return true;
    }

protected:
    // The names in the first line; false where there is none.
    virtual bool read_names(std::vector<std::string> &names) = 0;
    // The values of the next line; false behind the last.
    virtual bool read_values(std::vector<std::string> &values) = 0;

    InputLines &lines() { return lines_; }
    const std::vector<std::size_t> &places() const { return places_; }
    const Column &column(std::size_t i) const { return layout_.columns[places_[i]]; }

private:
    void begin()
    {
        std::vector<std::string> names;
        if (layout_.header && !read_names(names))
            throw BadLine(1, "the line of names is missing");
        if (!layout_.fields.empty())
            names = layout_.fields;
        places_ = names.empty() ? all_places(layout_.columns) : places_of(names, layout_.columns, 1);
    }

    InputLines lines_;
    RowLayout layout_;
    std::vector<std::size_t> places_;
};

// Fields with a separator between them, quoted as RFC 4180 has it.
class SeparatedLines : public FieldLines
{
public:
    SeparatedLines(std::FILE *file, RowLayout layout, char separator)
        : FieldLines(file, std::move(layout)), separator_(separator)
    {
    }

protected:
    bool read_names(std::vector<std::string> &names) override
    {
        if (!read_record(names))
            return false;
        for (std::string &name : names)
            name = trimmed(name);
        return true;
    }

    bool read_values(std::vector<std::string> &values) override { return read_record(values); }

private:
    bool read_record(std::vector<std::string> &fields)
    {
        begin_ = lines().number();
        size_ = 0;
        if (lines().peek() == EOF)
            return false;
        fields.clear();
        do
            fields.push_back(lines().peek() == '"' ? quoted() : plain());
        while (take_separator());
        return true;
    }

    void append(std::string &field, int c)
    {
        if (++size_ > longest_row)
            throw BadLine(begin_, "the row is too long; is the end of a quote missing?");
        field += static_cast<char>(c);
    }

    bool at_end_of_field()
    {
        const int c = lines().peek();
        return c == EOF || c == '\n' || c == static_cast<unsigned char>(separator_);
    }

    std::string plain()
    {
        std::string field;
        while (!at_end_of_field()) {
            if (lines().peek() == '"')
                throw BadLine(begin_, "a quote stands within a value that is not quoted");
            append(field, lines().get());
        }
        if (field.ends_with('\r') && lines().peek() != static_cast<unsigned char>(separator_))
            field.pop_back();
        return field;
    }

    std::string quoted()
    {
        std::string field;
        lines().get();
        for (;;) {
            const int c = lines().get();
            if (c == EOF)
                throw BadLine(begin_, "a quote is not closed");
            if (c != '"')
                append(field, c);
            else if (lines().peek() == '"')
                append(field, lines().get());
            else
                break;
        }
        if (lines().peek() == '\r')
            lines().get();
        if (!at_end_of_field())
            throw BadLine(begin_, "something stands behind the end of a quoted value");
        return field;
    }

    // Whether a field follows; else the end of the line is behind.
    bool take_separator() { return lines().get() == static_cast<unsigned char>(separator_); }

    char separator_;
    std::int64_t begin_ = 1;
    std::size_t size_ = 0;
};

// Fields in full width with a blank between two, as they stand in tables.
class WideLines : public FieldLines
{
public:
    using FieldLines::FieldLines;

protected:
    bool read_names(std::vector<std::string> &names) override
    {
        std::string line;
        if (!lines().next_line(line))
            return false;
        for (std::size_t at = 0; (at = line.find_first_not_of(' ', at)) != std::string::npos;) {
            const std::size_t end = std::min(line.find(' ', at), line.size());
            names.push_back(line.substr(at, end - at));
            at = end;
        }
        return !names.empty();
    }

    bool read_values(std::vector<std::string> &values) override
    {
        const std::int64_t number = lines().number();
        std::string line;
        if (!lines().next_line(line))
            return false;
        fit(line, number);
        std::size_t at = 0;
        for (std::size_t i = 0; i < places().size(); ++i) {
            if (i > 0 && line[at++] != ' ')
                throw BadLine(number, "field " + column(i).name + ": no blank stands before it");
            values.push_back(line.substr(at, column(i).width));
            at += column(i).width;
        }
        return true;
    }

private:
    // Blanks at the end may be missing or too many. A number ends where its field does: a line that ends
    // before was cut.
    void fit(std::string &line, std::int64_t number) const
    {
        std::size_t width = places().size() - 1;
        for (std::size_t i = 0; i < places().size(); ++i)
            width += column(i).width;
        const std::size_t last = width - column(places().size() - 1).width;
        const auto end = line.find_last_not_of(' ') + 1;
        const bool padded =
            line.size() < width && line.size() > last && column(places().size() - 1).type == dbSTRING;
        if ((line.size() < width && !padded) || end > width)
            throw BadLine(number, "the line has " + std::to_string(line.size()) + " bytes, its fields have " +
                                      std::to_string(width));
        line.resize(width, ' ');
    }
};

} // namespace

std::size_t column_place(const std::vector<Column> &columns, const std::string &name, std::int64_t line)
{
    std::vector<std::string_view> known;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name == name || columns[i].table + "." + columns[i].name == name)
            return i;
        known.emplace_back(columns[i].name);
    }
    throw BadLine(line, "the table has no field '" + name + "'" + near_name_hint(name, known));
}

std::unique_ptr<RowInput> open_rows(std::FILE *file, const Format &format, RowLayout layout)
{
    if (!format.separator)
        return json_rows(file, std::move(layout.columns));
    if (format.flag == 0)
        return std::make_unique<WideLines>(file, std::move(layout));
    return std::make_unique<SeparatedLines>(file, std::move(layout), *format.separator);
}

} // namespace ovdb
