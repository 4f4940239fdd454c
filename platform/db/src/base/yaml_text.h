// Texts as scalars of a parameter file, whatever they hold.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

// The text in double quotes. Bytes that are not UTF-8, which such a file cannot hold, become question marks.
std::string yaml_quoted(std::string_view text);

} // namespace orvane
