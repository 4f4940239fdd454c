#include "near_name.h"

#include <algorithm>
#include <utility>

namespace ovdb {

namespace {

constexpr std::size_t longest_name = 40; // a longer one is no misspelt one

// Letters to be put in, left out or changed.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

} // namespace

std::string near_name_hint(std::string_view name, const std::vector<std::string_view> &known)
{
    if (name.size() > longest_name)
        return {};
    std::string_view nearest;
    std::size_t least = std::max<std::size_t>(1, name.size() / 3) + 1;
    for (const std::string_view candidate : known) {
        const bool begins =
            name.find_first_not_of('-') != std::string_view::npos && candidate.starts_with(name);
        const std::size_t far = begins ? 0 : distance(name, candidate);
        if (far < least) {
            least = far;
            nearest = candidate;
        }
    }
    return nearest.empty() ? std::string() : "; did you mean " + std::string(nearest) + "?";
}

} // namespace ovdb
