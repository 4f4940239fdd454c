// What a fuzzer does with a promise that is broken.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace orvane::fuzz {

[[noreturn]] inline void broken(const char *file, int line, const char *promise, const std::string &about)
{
    std::fprintf(stderr, "%s:%d: broken: %s\n%s\n", file, line, promise, about.c_str());
    std::abort();
}

} // namespace orvane::fuzz

// Ends the run unless the promise holds; `about` (a std::string) is only made where it doesn't.
#define FUZZ_CHECK(promise, about)                                                                           \
    ((promise) ? static_cast<void>(0) : ::orvane::fuzz::broken(__FILE__, __LINE__, #promise, (about)))
