// Lists and arrays of texts for callers of the C interface, who own them and their texts.
#pragma once

#include <orvane/util.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// Throws std::bad_alloc, leaving nothing behind.
Tbl *new_text_list(const std::vector<std::string_view> &texts);
Arr *new_text_array(const std::map<std::string, std::string> &texts);

} // namespace orvane
