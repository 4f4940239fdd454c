// Who holds a lock that one waits for.
#pragma once

#include "storage/file_system.h"

#include <string>

namespace orvane {

// "ovdb (process 4711)", or "another program" where the system doesn't tell: of other users' programs, of
// other machines, and where there is no list of processes. Looks through all processes, so it is for those
// who wait for long.
std::string lock_holder(RandomAccessFile &file);

} // namespace orvane
