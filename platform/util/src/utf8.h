#ifndef ORVANE_UTIL_UTF8_H
#define ORVANE_UTIL_UTF8_H

#include <cstddef>
#include <string_view>

namespace orvane::util {

/* The length in bytes of the character that `text` starts with, or 0 when it starts with none: overlong
 * forms, surrogates and values beyond U+10FFFF are none. */
constexpr size_t utf8_length(std::string_view text)
{
    struct Form {
        unsigned char lead_mask, lead;
        size_t length;
        char32_t least;
    };
    constexpr Form forms[] = {{0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
    if (text.empty())
        return 0;
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80)
        return 1;
    for (const Form &form : forms) {
        if ((first & form.lead_mask) != form.lead)
            continue;
        if (text.size() < form.length)
            return 0;
        char32_t value = first & static_cast<unsigned char>(~form.lead_mask);
        for (size_t i = 1; i < form.length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xC0) != 0x80)
                return 0;
            value = (value << 6) | (next & 0x3F);
        }
        const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
        return value >= form.least && value <= 0x10FFFF && !surrogate ? form.length : 0;
    }
    return 0;
}

} // namespace orvane::util

#endif
