// Making databases: a descriptor, and where it is needed a copy of the schema beside it.
#pragma once

#include "catalog/descriptor.h"
#include "schema/schema.h"
#include "storage/file_system.h"
#include "storage/located_path.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

// The file "NAME.yaml" or a path of one stands for itself; any other text is a name that is looked for as a
// descriptor in the folder would find it.
Result<std::shared_ptr<const Schema>> find_schema(FileSystem &files, const LocatedPath &folder,
                                                  const std::string &name_or_file);

// The names of all schemas that a descriptor in the folder would find, in order of the search, each once.
std::vector<std::string> schema_names(FileSystem &files, const LocatedPath &folder);

// What has to stand beside a descriptor at the path so that it finds that very schema: the text of its file,
// or nothing where it is found already. A failure where another one of its name would be found.
Result<std::optional<std::string>> schema_to_copy(FileSystem &files, const LocatedPath &descriptor,
                                                  const Schema &schema);

// Writes a descriptor, and what schema_to_copy says; `descriptor.schema` is a name or a file as find_schema
// takes it. A file that is there stays as it is, and is a failure; after a failure nothing is left.
Status create_database(FileSystem &files, const LocatedPath &path, Descriptor descriptor);

} // namespace orvane
