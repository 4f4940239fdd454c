#include "base/checksum.h"
#include "base/concat.h"
#include "saved/saved_text.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace orvane {

namespace {

constexpr std::size_t piece_bytes = 1 << 18;

class TextWriter
{
public:
    TextWriter(const TextSink &sink, Work &work) : sink_(sink), work_(work)
    {
        text_.reserve(piece_bytes + 1024);
    }

    // Where text is appended.
    std::string &text() { return text_; }
    // Hands the text on, and asks whether to stop.
    Status pass_on()
    {
        checksum_.add(text_);
        Status written = sink_(text_);
        text_.clear();
        return written.ok() ? work_.poll() : written;
    }
    const Checksum &checksum() const { return checksum_; }

private:
    const TextSink &sink_;
    Work &work_;
    std::string text_;
    Checksum checksum_;
};

void append_number(std::string &text, RowNumber number)
{
    std::array<char, 16> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

void append_row(std::string &text, const RowColumnsToSave &rows, std::size_t row)
{
    for (std::size_t m = 0; m < rows.columns.size(); ++m) {
        if (m > 0)
            text += ' ';
        const RowNumber record = rows.columns[m] ? rows.columns[m][row] : static_cast<RowNumber>(row);
        if (record == null_row)
            text += '-';
        else
            append_number(text, record);
    }
}

void append_bundle(std::string &text, const RowColumnsToSave &rows, std::size_t bundle)
{
    append_number(text, rows.columns.front()[bundle]);
    text += ' ';
    append_number(text, rows.columns.front()[bundle + 1]);
}

} // namespace

std::string end_line(const Checksum &checksum)
{
    char text[16];
    std::snprintf(text, sizeof text, "end %08x", static_cast<unsigned>(checksum.value()));
    return text;
}

Status write_saved_view(const SavedHead &head, const std::vector<RowColumnsToSave> &rows,
                        const TextSink &sink, Work &work)
{
    std::int64_t all = 0;
    for (const SavedPart &part : head.parts)
        all += part.kind == PartKind::Table ? 0 : part.count;
    TextWriter out(sink, work);
    out.text() = saved_head_text(head);
    std::int64_t done = 0;
    for (std::size_t p = 0; p < head.parts.size(); ++p) {
        const SavedPart &part = head.parts[p];
        if (part.kind == PartKind::Table)
            continue;
        const auto append = part.kind == PartKind::Rows ? append_row : append_bundle;
        for (std::size_t row = 0; row < static_cast<std::size_t>(part.count); ++row, ++done) {
            append(out.text(), rows[p], row);
            out.text() += '\n';
            if (out.text().size() < piece_bytes)
                continue;
            work.advance_to(static_cast<double>(done) / static_cast<double>(all));
            if (Status passed = out.pass_on(); !passed.ok())
                return passed;
        }
    }
    if (Status passed = out.pass_on(); !passed.ok())
        return passed;
    return sink(end_line(out.checksum()) + "\n");
}

} // namespace orvane
