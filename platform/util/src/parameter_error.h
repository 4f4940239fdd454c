#ifndef ORVANE_UTIL_PARAMETER_ERROR_H
#define ORVANE_UTIL_PARAMETER_ERROR_H

#include <stdexcept>
#include <string>

#include "parameter_node.h"

namespace orvane::util {

/* Why a parameter file is refused: "file:line:column: reason", or "file: reason" without a place. Never
 * leaves the library. */
class ParameterError : public std::runtime_error
{
public:
    ParameterError(const std::string &file, const std::string &reason) : runtime_error(file + ": " + reason)
    {
    }
    ParameterError(const std::string &file, PfPlace place, const std::string &reason)
        : runtime_error(file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                        reason)
    {
    }
};

} // namespace orvane::util

#endif
