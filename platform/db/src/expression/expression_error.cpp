#include "expression/expression_error.h"

#include <algorithm>

#include "base/concat.h"

namespace orvane::expr {

namespace {

constexpr std::size_t excerpt_before = 48; // bytes shown on either side of the place
constexpr std::size_t excerpt_after = 28;
constexpr std::size_t quoted_length = 40;

bool continues_character(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

// Control characters would break the line that they are shown in; a tab takes one column then.
std::string printable(std::string_view piece)
{
    std::string out(piece);
    for (char &c : out)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = ' ';
    return out;
}

std::size_t characters(std::string_view piece)
{
    return static_cast<std::size_t>(
        std::count_if(piece.begin(), piece.end(), [](char c) { return !continues_character(c); }));
}

struct Line {
    std::string_view text;
    std::size_t place; // offset of the place in the line
};

Line line_of(std::string_view text, std::size_t offset)
{
    const std::size_t start = offset == 0 ? 0 : [&] {
        const std::size_t feed = text.rfind('\n', offset - 1);
        return feed == std::string_view::npos ? 0 : feed + 1;
    }();
    const std::size_t end = std::min(text.find('\n', offset), text.size());
    return {text.substr(start, end - start), offset - start};
}

} // namespace

Place spanning(Place a, Place b)
{
    const std::size_t offset = std::min(a.offset, b.offset);
    return {offset, std::max(a.offset + a.length, b.offset + b.length) - offset};
}

std::string shortened(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return printable(text);
    while (most > 0 && continues_character(text[most]))
        --most;
    return printable(text.substr(0, most)) + "…";
}

std::string quoted(std::string_view piece)
{
    return concat('`', shortened(piece, quoted_length), '`');
}

Status error_status(std::string_view text, const ExpressionError &error)
{
    const std::size_t offset = std::min(error.place.offset, text.size());
    const Line line = line_of(text, offset);
    std::size_t first = line.place > excerpt_before ? line.place - excerpt_before : 0;
    while (first > 0 && first < line.text.size() && continues_character(line.text[first]))
        --first;
    std::size_t end =
        std::min(line.text.size(), line.place + std::max<std::size_t>(error.place.length, 1) + excerpt_after);
    if (end - first > excerpt_before + 2 * excerpt_after)
        end = first + excerpt_before + 2 * excerpt_after;
    while (end < line.text.size() && continues_character(line.text[end]))
        ++end;

    const std::string_view before = line.text.substr(first, line.place - first);
    const std::string_view marked =
        line.text.substr(line.place, std::min(error.place.length, end - line.place));
    const std::string_view lead = first > 0 ? "…" : "";
    const std::string_view tail = end < line.text.size() ? "…" : "";
    return Status(error.code,
                  concat(error.reason, "\n  ", lead, printable(line.text.substr(first, end - first)), tail,
                         "\n  ", std::string(characters(lead) + characters(before), ' '),
                         std::string(std::max<std::size_t>(characters(marked), 1), '^')));
}

} // namespace orvane::expr
