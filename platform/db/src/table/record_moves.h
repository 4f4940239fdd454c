// How records were numbered anew when some of them were removed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvane {

struct RecordMoves {
    std::int64_t from = -1;         // the numbering before; -1: there were no moves
    std::int64_t to = -1;           // the numbering after
    std::vector<std::int64_t> gone; // of the old numbers, ascending

    // The new number of a record, -1 where it is gone.
    std::int64_t place_of(std::int64_t number) const
    {
        const auto at = std::lower_bound(gone.begin(), gone.end(), number);
        return number < 0 || (at != gone.end() && *at == number) ? -1 : number - (at - gone.begin());
    }
};

} // namespace orvane
