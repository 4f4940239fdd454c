// Which record of a table each row of a sorted view of it shows.
#ifndef OVEDIT_ROW_RECORDS_H
#define OVEDIT_ROW_RECORDS_H

#include <cstdint>
#include <vector>

#include <orvane/db.h>

// By row, -1 where none is found. The two are told apart by the text of their records: records with the same
// text stand for each other in their order.
std::vector<std::int64_t> recordsOfRows(Dbptr view, Dbptr table);

#endif
