/* printf into a std::string of bounded length. */
#ifndef ORVANE_UTIL_FORMATTED_TEXT_H
#define ORVANE_UTIL_FORMATTED_TEXT_H

#include <cstdarg>
#include <cstddef>
#include <string>

namespace orvane::util {

/* At most `most` bytes, cut between characters and followed by how much is missing. Throws std::bad_alloc. */
std::string formatted_text(size_t most, const char *format, va_list arguments);

/* The length of the longest prefix of at most `most` bytes that ends between two UTF-8 characters. */
size_t whole_characters(const std::string &text, size_t most);

} // namespace orvane::util

#endif
