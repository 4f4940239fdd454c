#include "selected_sections.h"

#include <algorithm>

namespace {

struct Interval {
    int first;
    int last;
};

// Whether the intervals leave none of the places from 0 out. Sorts them.
bool coverAll(std::vector<Interval> &intervals, int places)
{
    std::sort(intervals.begin(), intervals.end(),
              [](const Interval &a, const Interval &b) { return a.first < b.first; });
    int next = 0;
    for (const Interval &interval : intervals) {
        if (interval.first > next) {
            return false;
        }
        next = std::max(next, interval.last + 1);
    }
    return next >= places && places > 0;
}

} // namespace

SelectedSections::SelectedSections(const QItemSelection &selection, Qt::Orientation orientation, int first,
                                   int last, int across)
    : m_first(first)
{
    if (last < first) {
        return;
    }
    const auto sections = static_cast<std::size_t>(last - first + 1);
    std::vector<std::vector<Interval>> selected(sections);
    for (const QItemSelectionRange &range : selection) {
        const bool isOfColumns = orientation == Qt::Horizontal;
        const Interval along =
            isOfColumns ? Interval{range.left(), range.right()} : Interval{range.top(), range.bottom()};
        const Interval cells =
            isOfColumns ? Interval{range.top(), range.bottom()} : Interval{range.left(), range.right()};
        for (int section = std::max(along.first, first); section <= std::min(along.last, last); ++section) {
            selected[static_cast<std::size_t>(section - first)].push_back(cells);
        }
    }
    m_states.reserve(sections);
    for (std::vector<Interval> &intervals : selected) {
        m_states.push_back(intervals.empty() ? Untouched : coverAll(intervals, across) ? Covered : Touched);
    }
}
