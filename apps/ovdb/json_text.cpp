#include "json_text.h"

#include <cstdint>
#include <cstdio>

namespace ovdb {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

// The bytes of the character that the text, which isn't empty, begins with; 0 where it begins with none.
std::size_t character_length(std::string_view text)
{
    struct Form {
        unsigned char mask, first;
        std::size_t length;
        std::uint32_t least; // a lower code has a shorter form
    };
    static constexpr Form forms[] = {
        {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const Form &form : forms) {
        if ((byte(0) & form.mask) != form.first)
            continue;
        if (text.size() < form.length)
            return 0;
        std::uint32_t code = byte(0) & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i < form.length; ++i) {
            if ((byte(i) & 0xC0) != 0x80)
                return 0;
            code = code << 6 | (byte(i) & 0x3F);
        }
        const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
        return code >= form.least && code <= 0x10FFFF && !surrogate ? form.length : 0;
    }
    return 0;
}

void append_escaped(char c, std::string &out)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned char>(c));
    out += text;
}

std::size_t digits(std::string_view text, std::size_t from)
{
    const auto end = text.find_first_not_of("0123456789", from);
    return (end == std::string_view::npos ? text.size() : end) - from;
}

} // namespace

void append_json_string(std::string_view text, std::string &out)
{
    out += '"';
    while (!text.empty()) {
        const char c = text.front();
        std::size_t length = 1;
        if (c == '"' || c == '\\')
            out.append(1, '\\').append(1, c);
        else if (static_cast<unsigned char>(c) < 0x20)
            append_escaped(c, out);
        else if (static_cast<unsigned char>(c) < 0x80)
            out += c;
        else if (const std::size_t bytes = character_length(text); bytes > 0)
            out += text.substr(0, length = bytes);
        else
            out += replacement;
        text.remove_prefix(length);
    }
    out += '"';
}

bool is_json_number(std::string_view text)
{
    std::size_t at = text.starts_with('-') ? 1 : 0;
    const std::size_t whole = digits(text, at);
    if (whole == 0 || (whole > 1 && text[at] == '0'))
        return false;
    at += whole;
    if (at < text.size() && text[at] == '.') {
        const std::size_t fraction = digits(text, at + 1);
        if (fraction == 0)
            return false;
        at += 1 + fraction;
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-'))
            ++at;
        const std::size_t exponent = digits(text, at);
        if (exponent == 0)
            return false;
        at += exponent;
    }
    return at == text.size();
}

} // namespace ovdb
