#include "base/yaml_text.h"

#include <cstddef>

namespace orvane {

namespace {

// The length of the UTF-8 character at the beginning of a text; 0 where there is none.
std::size_t character_length(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80                     ? 1
                               : first >= 0xc2 && first <= 0xdf ? 2
                               : first >= 0xe0 && first <= 0xef ? 3
                               : first >= 0xf0 && first <= 0xf4 ? 4
                                                                : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    const bool overlong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xf0 && byte(1) < 0x90);
    const bool not_a_character = (first == 0xed && byte(1) >= 0xa0) || (first == 0xf4 && byte(1) >= 0x90);
    return overlong || not_a_character ? 0 : length;
}

void append_escaped(std::string &out, unsigned code)
{
    constexpr char digits[] = "0123456789abcdef";
    out.append(code > 0xff ? "\\u" : "\\x");
    for (int shift = code > 0xff ? 12 : 4; shift >= 0; shift -= 4)
        out.push_back(digits[(code >> shift) & 15]);
}

// What a reader would take for the end of a line, for a mark at the beginning of the text, or for nothing
// that a text may hold.
bool has_to_be_escaped(unsigned code)
{
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x2028 || code == 0x2029 ||
           code == 0xfeff || code == 0xfffe || code == 0xffff;
}

// The code of a character of that length, up to three bytes; 0 for one of four.
unsigned code_of(std::string_view text, std::size_t length)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    return length == 1   ? byte(0)
           : length == 2 ? (byte(0) & 0x1fu) << 6 | (byte(1) & 0x3fu)
           : length == 3 ? (byte(0) & 0x0fu) << 12 | (byte(1) & 0x3fu) << 6 | (byte(2) & 0x3fu)
                         : 0;
}

} // namespace

std::string yaml_quoted(std::string_view text)
{
    std::string out = "\"";
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        const unsigned code = code_of(text, length);
        if (length == 0)
            out.push_back('?');
        else if (code == '"' || code == '\\')
            out.append({'\\', text.front()});
        else if (length < 4 && has_to_be_escaped(code))
            append_escaped(out, code);
        else
            out.append(text.substr(0, length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return out.append("\"");
}

} // namespace orvane
