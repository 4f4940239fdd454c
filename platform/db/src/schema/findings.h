// What is wrong with a file, all of it up to a bound, each with its place.
#pragma once

#include "base/status.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

struct Place {
    std::int64_t line = 0; // from 1; 0: the file as a whole
    std::int64_t column = 0;
};

class Findings
{
public:
    explicit Findings(std::string file) : file_(std::move(file)) {}

    void add(Place place, std::string text);
    bool empty() const { return lines_.empty(); }
    // A failure with one line a finding, "FILE:LINE:COLUMN: TEXT", in the order of the file; or success.
    Status status() const;

private:
    struct Line {
        Place place;
        std::string text;
    };
    std::string file_;
    std::vector<Line> lines_;
};

} // namespace orvane
