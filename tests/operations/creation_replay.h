// The creation text of a view, read as instructions.
#pragma once

#include <orvane/db.h>

#include <string>

// Does what each line says, in the database of the pointer; what is made on the way is freed again. A line
// that can't be followed is a failure of the test and an invalid pointer.
Dbptr replay(Dbptr database, const std::string &creation);
