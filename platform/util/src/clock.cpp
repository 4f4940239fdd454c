#include <chrono>

#include <orvane/util.h>

double std_now(void)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}
