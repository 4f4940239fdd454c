// A table or view taken apart into what a saved view holds.
#pragma once

#include "catalog/database.h"
#include "saved/saved_text.h"

#include <memory>
#include <vector>

namespace orvane {

struct SavedParts {
    SavedHead head;
    std::vector<RowColumnsToSave> rows;       // by part
    std::vector<std::shared_ptr<Table>> kept; // the tables, whose rows these are
};

// The view, or of a base table the view of all its records. Fails where records that rows stand for are gone.
Result<SavedParts> take_apart(const Database &database, const std::shared_ptr<Table> &table);

} // namespace orvane
