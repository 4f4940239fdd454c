/* The bytes of a parameter file, before anything is understood of them. */
#ifndef ORVANE_UTIL_PARAMETER_SOURCE_H
#define ORVANE_UTIL_PARAMETER_SOURCE_H

#include <string>
#include <string_view>

namespace orvane::util {

/* The largest parameter file that is read, in bytes. */
constexpr size_t most_parameter_bytes = 16 << 20;

/* The whole file; throws ParameterError when it can't be read or is too large. */
std::string parameter_source(const std::string &path);

/* The text without a byte order mark; throws ParameterError with the place of the first byte that is not
 * UTF-8 or of the first character that no text has. */
std::string_view checked_parameter_text(std::string_view text, const std::string &name);

} // namespace orvane::util

#endif
