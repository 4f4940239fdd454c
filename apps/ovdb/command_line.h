// Arguments to a request.
#pragma once

#include "request.h"

#include <string>
#include <vector>

namespace ovdb {

// The arguments behind the program's name. Throws a Failure of usage.
Request parse_command_line(const std::vector<std::string> &arguments);

} // namespace ovdb
