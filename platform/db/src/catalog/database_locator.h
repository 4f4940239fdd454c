// What a path given to open means: a descriptor, table files without one, or either of them with a table.
#pragma once

#include "catalog/descriptor.h"
#include "schema/schema.h"
#include "storage/file_system.h"
#include "storage/located_path.h"

#include <memory>
#include <string>

namespace orvane {

struct LocatedDatabase {
    LocatedPath path; // of the descriptor, whether there is one or not
    bool has_descriptor = false;
    Descriptor descriptor;
    std::shared_ptr<const Schema> schema;
    int table = -1;           // the relation that the path points at; -1: none
    std::string saved_view{}; // the saved view that it points at; empty: none
};

// Reads the descriptor, if there is one, and the schema. Of table files it asks whether they are there; and
// of a file that the path names itself, and that could be a table's, it reads the first bytes to tell.
Result<LocatedDatabase> locate_database(FileSystem &files, const std::string &path);

} // namespace orvane
