#include "schema/findings.h"

#include "base/concat.h"

#include <algorithm>
#include <tuple>

namespace orvane {

namespace {
constexpr std::size_t max_shown = 50;
}

void Findings::add(Place place, std::string text)
{
    lines_.push_back(Line{place, std::move(text)});
}

Status Findings::status() const
{
    if (lines_.empty())
        return Status();
    auto ordered = lines_;
    std::stable_sort(ordered.begin(), ordered.end(), [](const Line &a, const Line &b) {
        return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
    });
    std::string message;
    for (std::size_t i = 0; i < ordered.size() && i < max_shown; ++i) {
        const Line &line = ordered[i];
        if (i > 0)
            message += '\n';
        message += line.place.line > 0
                       ? concat(file_, ":", line.place.line, ":", line.place.column, ": ", line.text)
                       : concat(file_, ": ", line.text);
    }
    if (ordered.size() > max_shown)
        message += concat("\n", file_, ": and ", ordered.size() - max_shown, " more");
    return Status(Code::Format, message);
}

} // namespace orvane
