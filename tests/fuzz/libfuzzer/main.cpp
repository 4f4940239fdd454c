// The entry of a fuzzing program, which runs the one fuzzer that it was compiled for.
#include "fuzzers.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    orvane::fuzz::ORVANE_FUZZER({reinterpret_cast<const char *>(bytes), size});
    return 0;
}
