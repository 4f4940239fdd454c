// How much memory there is for this process: that of the machine, or what a control group leaves of it.
#pragma once

#include <cstddef>

namespace orvane {

// All that the process may use, whoever uses it now.
std::size_t machine_memory();
// What could be had now without swapping, files that are only kept in memory counted in. As much as one likes
// where the system doesn't say.
std::size_t available_memory();

} // namespace orvane
