// Help on the functions, printed from their table.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"

namespace orvane::expr {

// What a function takes, gives and does: some lines of plain text, each ended. Fails, with the names that are
// near, when there is no such function.
Result<std::string> function_help(std::string_view name);

// All functions as a table each group, for the reference of the language (Markdown).
std::string function_reference();

} // namespace orvane::expr
