// Saved views: kept as files beside a database, or on their way through a stream.
#pragma once

#include "catalog/database.h"
#include "saved/saved_text.h"

#include <string>

namespace orvane {

// Adds the saved views that lie beside the database's descriptor to its views. Of each the head is read. A
// file that can't be read as one is left out, and a notice says why; so does looking its name up.
void add_saved_views(Database &database, FileSystem &files);

// Whether the first bytes of a file are those of a saved view.
bool looks_like_saved_view(std::string_view head);

// Writes a table or view as a saved view.
Status write_view(Database &database, const std::shared_ptr<Table> &table, const TextSink &sink, Work &work);

// Saves a table or view beside the database's descriptor, in place of the one that was saved under its name.
// Answers where.
Result<LocatedPath> save_view(Database &database, FileSystem &files, const std::shared_ptr<Table> &table,
                              Work &work);

// Adds a view that is read whole. An empty name stands for the one that it was saved under, if that is free,
// or for one like it. Answers its index.
Result<std::int64_t> read_view(Database &database, LineReader &lines, const SavedHead &head, std::string name,
                               Work &work);

} // namespace orvane
