#include <chrono>
#include <random>

#include <orvane/util.h>

namespace {

uint64_t seed()
{
    try {
        std::random_device device;
        return (static_cast<uint64_t>(device()) << 32) | device();
    } catch (...) { // no source of randomness: any two runs still differ
        return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
}

} // namespace

double disordered(void)
{
    thread_local std::mt19937_64 generator(seed());
    // 53 bits fill a double's fraction exactly, so 1 is never reached by rounding.
    return static_cast<double>(generator() >> 11) * 0x1p-53;
}
