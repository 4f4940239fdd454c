#ifndef ORVANE_TESTS_EXPRESSION_CASE_FILE_H
#define ORVANE_TESTS_EXPRESSION_CASE_FILE_H

#include <string>
#include <vector>

#include "memory_rows.h"

namespace orvane::expr::test {

/* A file of statements about the language:
 *
 *     # a comment
 *     field lat real -999.0000       a field: name or table.name, type, null
 * text row lat=42.5 sta='A B'         the row that the following statements
 * see; fields left out are null
 *
 *     > lat > 10                     an expression; more lines with > are more
 * lines of it true                           its value, or its error, as it is
 * shown
 *
 * Blank lines end statements. */
struct Case {
    int line = 0;
    std::string expression;
    std::string expected; // lines, each ended but the last
    std::vector<std::string> row;
};

struct CaseFile {
    std::vector<ScopeField> fields;
    std::vector<Case> cases;
};

/* Throws, with the line, what is wrong in the file. */
CaseFile readCases(const std::string &path);

} // namespace orvane::expr::test

#endif
