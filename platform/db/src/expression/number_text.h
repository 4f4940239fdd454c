// Numbers as text and back, the same in every locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::expr {

struct WrittenNumber {
    bool whole = false;
    std::int64_t integer = 0; // where whole
    double real = 0;          // always
};

// The whole text but for blanks at its ends; decimal, finite. None for anything else.
std::optional<WrittenNumber> read_number(std::string_view text);

// The shortest text that reads as the same number: "8", "0.1", "1e+30".
std::string number_text(double number);

} // namespace orvane::expr
