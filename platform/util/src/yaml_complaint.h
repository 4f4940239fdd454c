/* What the YAML parser complains about, with a place and in words that say what was expected. */
#ifndef ORVANE_UTIL_YAML_COMPLAINT_H
#define ORVANE_UTIL_YAML_COMPLAINT_H

#include <string>
#include <yaml.h>

#include "parameter_node.h"

namespace orvane::util {

struct YamlComplaint {
    PfPlace place;
    std::string reason;
};

PfPlace place_of(const yaml_mark_t &mark);

YamlComplaint yaml_complaint(const yaml_parser_t &parser);

} // namespace orvane::util

#endif
