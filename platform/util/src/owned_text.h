/* Text that a C caller releases with free(). */
#ifndef ORVANE_UTIL_OWNED_TEXT_H
#define ORVANE_UTIL_OWNED_TEXT_H

#include <string_view>

namespace orvane::util {

/* A copy in memory of malloc's; throws std::bad_alloc. */
char *owned_text(std::string_view text);

} // namespace orvane::util

#endif
