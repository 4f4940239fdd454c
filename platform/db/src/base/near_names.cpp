#include "base/near_names.h"

#include <algorithm>
#include <cctype>

namespace orvane {

namespace {

constexpr std::size_t max_length = 64; // longer names are not compared: the work is the product of both

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Insertions, deletions, substitutions and swaps of neighbours that make one text of the other.
std::size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> before(b.size() + 1); // the row above the one above
    std::vector<std::size_t> above(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        above[j] = j;
    const auto same = [&](std::size_t i, std::size_t j) { return lower(a[i - 1]) == lower(b[j - 1]); };
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same(i, j) ? 0 : 1)});
            if (i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(above);
        above.swap(row);
    }
    return above[b.size()];
}

bool begins(std::string_view text, std::string_view start)
{
    return start.size() >= 2 && text.size() > start.size() &&
           std::equal(start.begin(), start.end(), text.begin(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

std::vector<std::string_view> near_names(std::string_view name, const std::vector<std::string_view> &known)
{
    struct Candidate {
        std::size_t distance;
        std::string_view name;
    };
    std::vector<Candidate> candidates;
    const std::size_t allowed = std::clamp<std::size_t>(name.size() / 3, 1, 3);
    for (std::string_view other : known) {
        if (name.size() > max_length || other.size() > max_length)
            continue;
        const std::size_t distance = edit_distance(name, other);
        if (distance <= allowed && distance < name.size())
            candidates.push_back({distance, other});
        else if (begins(other, name) || begins(name, other))
            candidates.push_back({allowed + 1, other});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate &a, const Candidate &b) { return a.distance < b.distance; });
    std::vector<std::string_view> near;
    for (std::size_t i = 0; i < candidates.size() && i < 3; ++i)
        near.push_back(candidates[i].name);
    return near;
}

std::string near_names_hint(std::string_view name, const std::vector<std::string_view> &known)
{
    const auto near = near_names(name, known);
    return near.empty() ? std::string() : "; near it: " + joined(near);
}

std::string joined(const std::vector<std::string_view> &names, std::string_view separator)
{
    std::string out;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            out.append(separator);
        out.append(names[i]);
    }
    return out;
}

} // namespace orvane
