#include "owned_text.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace orvane::util {

char *owned_text(std::string_view text)
{
    auto *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (!copy)
        throw std::bad_alloc();
    if (!text.empty())
        std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

} // namespace orvane::util
