// Reads and checks one attribute of a schema.
#pragma once

#include "schema/attribute.h"
#include "schema/parameter_node.h"

namespace orvane {

// Whether the text can name an attribute or a relation: a letter or underscore, then letters, digits and
// underscores.
bool is_name(std::string_view text);

// The attribute as far as it can be read; what is wrong is in the mapping's findings. Width is at least 1.
Attribute read_attribute(const std::string &name, const ParameterMapping &mapping);

} // namespace orvane
