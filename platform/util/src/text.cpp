#include <cstring>

#include <orvane/util.h>

#include "white_space.h"

using orvane::util::trimmed;

char *strtrim(char *text)
{
    if (!text)
        return nullptr;
    const std::string_view kept = trimmed(text);
    if (!kept.empty())
        std::memmove(text, kept.data(), kept.size());
    text[kept.size()] = '\0';
    return text;
}

int whitespace(const char *text)
{
    return !text || trimmed(text).empty();
}
