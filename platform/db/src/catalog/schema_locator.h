// Finds the file of a schema and reads it.
#pragma once

#include "schema/schema.h"
#include "storage/file_system.h"
#include "storage/located_path.h"

#include <memory>
#include <string>
#include <vector>

namespace orvane {

// The schema that databases without a descriptor have: $ORVANE_SCHEMA, or css3.0.
std::string default_schema_name();

// Schemas are looked for in the folders of $ORVANE_SCHEMA_PATH, then beside the descriptor, then among the
// installed ones. The environment is read when the locator is made.
class SchemaLocator
{
public:
    SchemaLocator(FileSystem &files, const LocatedPath &descriptor_folder);

    // The schema, perhaps shared with another open database. A schema that is nowhere is NotFound, with the
    // places where it was looked for; one that is found and can't be read or is wrong is a failure at once.
    Result<std::shared_ptr<const Schema>> load(const std::string &name) const;
    // Where schemas are looked for, in order.
    const std::vector<LocatedPath> &folders() const { return folders_; }

private:
    FileSystem &files_;
    std::vector<LocatedPath> folders_;
};

} // namespace orvane
