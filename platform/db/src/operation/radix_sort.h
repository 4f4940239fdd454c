// Sorts row numbers by their keys.
#pragma once

#include "operation/sort_keys.h"

namespace orvane {

// All rows in the order of their keys; rows with equal keys in order of their numbers.
Result<RowNumbers> sorted_rows(const SortKeys &keys, Work &work);

} // namespace orvane
