#include "door/guard.h"

#include <orvane/db.h>

namespace orvane {

static_assert(static_cast<int>(Code::Stale) == dbERROR_STALE);
static_assert(static_cast<int>(Code::Argument) == dbERROR_ARGUMENT);
static_assert(static_cast<int>(Code::NotFound) == dbERROR_NOT_FOUND);
static_assert(static_cast<int>(Code::Format) == dbERROR_FORMAT);
static_assert(static_cast<int>(Code::Io) == dbERROR_IO);
static_assert(static_cast<int>(Code::Permission) == dbERROR_PERMISSION);
static_assert(static_cast<int>(Code::Value) == dbERROR_VALUE);
static_assert(static_cast<int>(Code::Memory) == dbERROR_MEMORY);
static_assert(static_cast<int>(Code::Cancelled) == dbERROR_CANCELLED);

void log_failure(const Status &failure)
{
    std::string_view rest = failure.message();
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        elog_log("%.*s", static_cast<int>(line.size()), line.data());
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
}

} // namespace orvane
