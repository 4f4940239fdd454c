// A table that the program itself makes, to be written in any format.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace ovdb {

struct Listing {
    using Cell = std::variant<std::string, std::int64_t>;

    std::vector<std::string> names;
    std::vector<std::vector<Cell>> rows; // each with as many cells as there are names
};

std::string cell_text(const Listing::Cell &cell);

// Columns as wide as their widest cell, numbers to the right.
std::string aligned(const Listing &listing, bool header);
// Cells between separators, quoted as RFC 4180 has it where needed.
std::string delimited(const Listing &listing, char separator, bool header);
// An array with one object a line.
std::string json(const Listing &listing);

} // namespace ovdb
