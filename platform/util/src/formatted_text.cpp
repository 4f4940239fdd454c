#include "formatted_text.h"

#include <algorithm>
#include <cstdio>

namespace orvane::util {

size_t whole_characters(const std::string &text, size_t most)
{
    size_t length = std::min(most, text.size());
    while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    return length;
}

std::string formatted_text(size_t most, const char *format, va_list arguments)
{
    va_list counted;
    va_copy(counted, arguments);
    char measured[1];
    const int length = std::vsnprintf(measured, sizeof measured, format, counted);
    va_end(counted);
    if (length < 0)
        return format; // the C library can't format it: the bare format still says where it came from
    std::string text(static_cast<size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    if (text.size() > most) {
        const size_t kept = whole_characters(text, most);
        const size_t missing = text.size() - kept;
        text.resize(kept);
        text += " ... (" + std::to_string(missing) + " bytes more)";
    }
    return text;
}

} // namespace orvane::util
