// The hook that is told what was changed.
#pragma once

#include "catalog/database.h"

#include <orvane/db.h>

namespace orvane {

// Who tells the hook of the changes of one call; empty while there is no hook.
ChangeListener change_listener(std::int64_t database_index, const Database &database);

} // namespace orvane
