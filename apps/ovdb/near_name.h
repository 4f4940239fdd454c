// The remedy for a misspelt command or option.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ovdb {

// "; did you mean --subset?" where one of the known names differs by few letters or begins with the name, or
// else nothing.
std::string near_name_hint(std::string_view name, const std::vector<std::string_view> &known);

} // namespace ovdb
