#include "listing.h"

#include "json_text.h"

#include <algorithm>

namespace ovdb {

namespace {

// Characters as a terminal shows them, not bytes.
std::size_t shown_width(const std::string &text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

bool is_number(const Listing::Cell &cell)
{
    return std::holds_alternative<std::int64_t>(cell);
}

std::vector<std::size_t> widths(const Listing &listing, bool header)
{
    std::vector<std::size_t> found(listing.names.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        found[i] = header ? shown_width(listing.names[i]) : 0;
        for (const auto &row : listing.rows)
            found[i] = std::max(found[i], shown_width(cell_text(row[i])));
    }
    return found;
}

void append_aligned(const std::string &text, std::size_t width, bool on_the_right, bool last,
                    std::string &out)
{
    const std::string blanks(width - shown_width(text), ' ');
    out.append(on_the_right ? blanks : std::string()).append(text);
    if (!last)
        out.append(on_the_right ? std::string() : blanks).append("  ");
}

void append_quoted(const std::string &text, char separator, std::string &out)
{
    if (text.find_first_of(std::string("\"\r\n") + separator) == std::string::npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char c : text)
        out.append(c == '"' ? 2 : 1, c);
    out += '"';
}

} // namespace

std::string cell_text(const Listing::Cell &cell)
{
    return is_number(cell) ? std::to_string(std::get<std::int64_t>(cell)) : std::get<std::string>(cell);
}

std::string aligned(const Listing &listing, bool header)
{
    const auto width = widths(listing, header);
    const std::size_t last = width.size() - 1;
    std::string out;
    for (std::size_t i = 0; header && i <= last; ++i) {
        const bool numbers = !listing.rows.empty() && is_number(listing.rows.front()[i]);
        append_aligned(listing.names[i], width[i], numbers, i == last, out);
    }
    if (header)
        out += '\n';
    for (const auto &row : listing.rows) {
        for (std::size_t i = 0; i <= last; ++i)
            append_aligned(cell_text(row[i]), width[i], is_number(row[i]), i == last, out);
        out += '\n';
    }
    return out;
}

std::string delimited(const Listing &listing, char separator, bool header)
{
    std::string out;
    const auto append = [&](std::size_t i, const std::string &text) {
        append_quoted(text, separator, out);
        out += i + 1 < listing.names.size() ? separator : '\n';
    };
    for (std::size_t i = 0; header && i < listing.names.size(); ++i)
        append(i, listing.names[i]);
    for (const auto &row : listing.rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            append(i, cell_text(row[i]));
    return out;
}

std::string json(const Listing &listing)
{
    std::string out = "[";
    for (std::size_t row = 0; row < listing.rows.size(); ++row) {
        out += row == 0 ? "\n{" : ",\n{";
        for (std::size_t i = 0; i < listing.names.size(); ++i) {
            out += i == 0 ? "" : ",";
            append_json_string(listing.names[i], out);
            out += ':';
            const Listing::Cell &cell = listing.rows[row][i];
            if (is_number(cell))
                out += cell_text(cell);
            else
                append_json_string(std::get<std::string>(cell), out);
        }
        out += '}';
    }
    return out + (listing.rows.empty() ? "]\n" : "\n]\n");
}

} // namespace ovdb
