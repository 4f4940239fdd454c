// Reads schemas and checks them whole.
#pragma once

#include "base/status.h"
#include "schema/schema.h"

#include <memory>
#include <string>

namespace orvane {

// The schema in a text, or a failure with a line for every finding (up to a bound), each with file, line and
// column. `file` names the text in messages and is kept in the schema.
Result<std::shared_ptr<const Schema>> read_schema(const std::string &text, const std::string &file);

} // namespace orvane
