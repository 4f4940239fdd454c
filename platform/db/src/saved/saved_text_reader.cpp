#include "base/concat.h"
#include "operation/operand.h"
#include "saved/saved_text.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::size_t longest_head = 16 << 20;
constexpr std::int64_t lines_between_polls = 64 << 10;
constexpr std::int64_t most_reserved = 16 << 20; // rows; a damaged head may promise any number of them

// Takes a number and what ends it off the line: no sign, no leading zero, nothing but digits.
bool take_number(std::string_view &line, RowNumber &number)
{
    std::size_t length = 0;
    std::uint64_t value = 0;
    while (length < line.size() && length < 11 && line[length] >= '0' && line[length] <= '9')
        value = value * 10 + static_cast<unsigned char>(line[length++] - '0');
    if (length == 0 || value >= null_row || (length > 1 && line.front() == '0'))
        return false;
    line.remove_prefix(length);
    number = static_cast<RowNumber>(value);
    return true;
}

class RowsReader
{
public:
    RowsReader(LineReader &lines, const SavedHead &head, Work *work) : lines_(lines), head_(head), work_(work)
    {
    }

    Result<std::vector<SavedColumns>> read()
    {
        std::vector<SavedColumns> parts;
        for (const SavedPart &part : head_.parts) {
            parts.emplace_back();
            Status read = part.kind == PartKind::Rows      ? read_rows(part, parts.back())
                          : part.kind == PartKind::Bundles ? read_bundles(part, parts.back())
                                                           : Status();
            if (!read.ok())
                return read;
        }
        if (Status ended = read_end(); !ended.ok())
            return ended;
        return parts;
    }

private:
    const SavedPart &part(int number) const { return head_.parts[static_cast<std::size_t>(number)]; }

    // One line per row: a number for each member, "-" for the null record.
    Status read_rows(const SavedPart &of, SavedColumns &columns)
    {
        const std::size_t members = of.members.size();
        columns.resize(members);
        std::vector<RowNumber> ends;
        for (std::size_t m = 0; m < members; ++m) {
            ends.push_back(static_cast<RowNumber>(part(of.members[m]).count));
            columns[m].reserve(static_cast<std::size_t>(std::min(of.count, most_reserved)));
        }
        return each_line(of, "a row", [&](std::string_view line) {
            for (std::size_t m = 0; m < members; ++m) {
                RowNumber record = null_row;
                if (m > 0 && !take(line, ' '))
                    return wrong_row(of);
                if (!take(line, '-') && (!take_number(line, record) || record >= ends[m]))
                    return wrong_row(of);
                columns[m].push_back(record);
            }
            return line.empty() ? Status() : wrong_row(of);
        });
    }

    // One line per bundle: its first row, and one beyond its last. Each begins where that before it ends.
    Status read_bundles(const SavedPart &of, SavedColumns &columns)
    {
        columns.resize(1);
        RowNumbers &firsts = columns.front();
        const auto rows = static_cast<RowNumber>(part(of.source).count);
        RowNumber expected = 0;
        Status read = each_line(of, "a bundle", [&](std::string_view line) {
            RowNumber first = 0;
            RowNumber end = 0;
            if (!take_number(line, first) || !take(line, ' ') || !take_number(line, end) || !line.empty() ||
                first != expected || end <= first || end > rows)
                return lines_.wrong(concat("bundle ", firsts.size(), " of ", of.name,
                                           " was expected: two numbers, ", expected,
                                           " and a greater one of up to ", rows));
            firsts.push_back(first);
            expected = end;
            return Status();
        });
        firsts.push_back(expected);
        return read;
    }

    template <typename Read>
    Status each_line(const SavedPart &of, const char *what, Read read)
    {
        std::string_view line;
        for (std::int64_t row = 0; row < of.count; ++row) {
            if (row % lines_between_polls == 0 && work_)
                if (Status told = work_->poll(); !told.ok())
                    return told;
            if (Status next = lines_.next(line, what); !next.ok())
                return next;
            if (Status done = read(line); !done.ok())
                return done;
        }
        return Status();
    }

    static bool take(std::string_view &line, char c)
    {
        if (!line.starts_with(c))
            return false;
        line.remove_prefix(1);
        return true;
    }

    Status wrong_row(const SavedPart &of) const
    {
        std::string expected;
        for (const int member : of.members)
            expected.append(expected.empty() ? "" : ", ")
                .append(concat(part(member).name, " below ", part(member).count));
        return lines_.wrong(
            concat("a row of view ", of.name, " was expected: the number of a record, or -, of ", expected));
    }

    // "end 1c291ca3": the checksum of all that stands before.
    Status read_end()
    {
        const std::string expected = end_line(lines_.checksum());
        std::string_view line;
        if (Status next = lines_.next(line, "the line 'end' with the checksum"); !next.ok())
            return next;
        if (line.size() != expected.size() || !line.starts_with("end "))
            return lines_.wrong("the line 'end' with a checksum of eight digits was expected");
        if (line != expected)
            return lines_.wrong("the checksum is not that of the text: it was damaged; save the view again");
        const auto ended = lines_.at_end();
        if (!ended.ok())
            return ended.status();
        return *ended ? Status() : lines_.wrong("the end of the file was expected behind this line");
    }

    LineReader &lines_;
    const SavedHead &head_;
    Work *work_;
};

} // namespace

Result<SavedHead> read_head_lines(LineReader &lines, const Schema *schema, std::string *head_text)
{
    std::string text;
    std::string_view line;
    for (;;) {
        if (Status next = lines.next(line, "the head of a saved view"); !next.ok())
            return next;
        if (lines.line_number() == 1 && !line.starts_with(saved_view_mark))
            return lines.wrong(concat("is no saved view: '", saved_view_mark, "1' was expected"));
        if (line == end_of_head) {
            if (head_text)
                *head_text = text;
            return read_saved_head(text, lines.shown(), schema);
        }
        text.append(line).append("\n");
        if (text.size() > longest_head)
            return lines.wrong(concat("the head has more than ", longest_head, " bytes"));
    }
}

Result<std::vector<SavedColumns>> read_saved_rows(LineReader &lines, const SavedHead &head, Work *work)
{
    for (const SavedPart &part : head.parts) {
        const double bytes = 4.0 * static_cast<double>(part.count) * static_cast<double>(part.members.size());
        if (Status fits = check_memory(bytes, concat(lines.shown(), " has ", part.count, " rows"));
            !fits.ok())
            return fits;
    }
    return RowsReader(lines, head, work).read();
}

} // namespace orvane
