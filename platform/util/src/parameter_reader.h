#ifndef ORVANE_UTIL_PARAMETER_READER_H
#define ORVANE_UTIL_PARAMETER_READER_H

#include <memory>
#include <string>
#include <string_view>

#include "parameter_node.h"

namespace orvane::util {

/* The root of a parameter file's text; throws ParameterError. `name` stands for the file. */
std::unique_ptr<Pf> read_parameters(std::string_view text, const std::string &name);

} // namespace orvane::util

#endif
