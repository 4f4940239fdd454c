#ifndef ORVANE_TESTS_CAPTURED_OUTPUT_H
#define ORVANE_TESTS_CAPTURED_OUTPUT_H

#include <string>

#include <gtest/gtest.h>

/* What `run` writes to standard error. */
template <class Run>
std::string standardErrorOf(Run run)
{
    testing::internal::CaptureStderr();
    run();
    return testing::internal::GetCapturedStderr();
}

/* What `run` writes to standard output. */
template <class Run>
std::string standardOutputOf(Run run)
{
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

#endif
