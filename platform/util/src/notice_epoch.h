#ifndef ORVANE_UTIL_NOTICE_EPOCH_H
#define ORVANE_UTIL_NOTICE_EPOCH_H

#include <cstdint>

namespace orvane::util {

/* Counts the notice hooks that were set. Who tells a thing once only tells it again when this has changed:
 * a new hook is a new listener. */
uint64_t notice_epoch();

} // namespace orvane::util

#endif
