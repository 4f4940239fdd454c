// Reads and checks one relation of a schema.
#pragma once

#include "schema/parameter_node.h"
#include "schema/schema.h"

namespace orvane {

// Adds the relation to the schema as far as it can be read; what is wrong is in the mapping's findings.
// The schema's attributes have to be there. `known_attributes` also names those that could not be read.
void read_relation(const std::string &name, const ParameterMapping &mapping, Schema &schema,
                   const std::vector<std::string_view> &known_attributes);

} // namespace orvane
