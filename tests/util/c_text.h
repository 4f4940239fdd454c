#ifndef ORVANE_TESTS_UTIL_C_TEXT_H
#define ORVANE_TESTS_UTIL_C_TEXT_H

#include <cstdlib>
#include <string>

#include <orvane/util.h>

/* A text that the library handed over, released. */
inline std::string taken(char *text)
{
    const std::string copy = text ? text : "(null)";
    std::free(text);
    return copy;
}

inline std::string log_text()
{
    return taken(elog_string(0));
}

#endif
