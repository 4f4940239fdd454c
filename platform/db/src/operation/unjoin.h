// A new database of the records that a view is made of.
#pragma once

#include "catalog/database.h"
#include "work/work.h"

#include <memory>

namespace orvane {

// Makes a database at a path, which no database has yet: a descriptor, and of every table that the view is
// made of a file with those of its records that rows stand for, once and in their order. Where it fails or is
// cancelled nothing of it is left.
Status unjoin(const Database &database, FileSystem &files, const std::shared_ptr<Table> &table,
              const LocatedPath &path, Work &work);

} // namespace orvane
