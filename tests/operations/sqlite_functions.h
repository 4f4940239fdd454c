// Functions that SQLite lacks and the expression language has, written anew and in other ways than the
// library's, so that they are opinions of their own.
#pragma once

#include <sqlite3.h>

void addFunctions(sqlite3 *database);
