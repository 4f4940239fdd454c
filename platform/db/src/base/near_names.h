// The remedy for a misspelt name: the known names that are nearest to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// Up to three of the known names that differ from `name` by few letters (case does not count) or that
// one begins the other, nearest first; equal ones in the order given.
std::vector<std::string_view> near_names(std::string_view name, const std::vector<std::string_view> &known);

// "; near it: a, b" for the end of a message, or nothing when no known name is near.
std::string near_names_hint(std::string_view name, const std::vector<std::string_view> &known);

// The names as "a, b, c".
std::string joined(const std::vector<std::string_view> &names, std::string_view separator = ", ");

} // namespace orvane
