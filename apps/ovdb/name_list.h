// Names as options take them: "sta, time".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ovdb {

// The names between the commas. Throws a Failure of usage, which begins with the option, where one is empty.
std::vector<std::string> name_list(std::string_view list, std::string_view option);

} // namespace ovdb
