// Tables and fields of a database as lists.
#pragma once

#include "library.h"
#include "listing.h"

namespace ovdb {

// The tables that have a file, or all of them. Why a file is refused is noted on standard error.
Listing table_listing(const Database &database, bool all);
// The fields of the table that was named, or of all tables of the schema.
Listing field_listing(const Database &database);

} // namespace ovdb
