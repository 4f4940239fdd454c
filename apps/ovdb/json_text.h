// Values as JSON has them (RFC 8259).
#pragma once

#include <string>
#include <string_view>

namespace ovdb {

// Appends a text with its quotes. Bytes that are no UTF-8 become U+FFFD.
void append_json_string(std::string_view text, std::string &out);

// Whether the text is a number as JSON writes them: no plus sign, no leading zeros, digits on both sides of a
// point.
bool is_json_number(std::string_view text);

} // namespace ovdb
