// Which rows or columns a selection touches, and which it covers from end to end.
#ifndef OVQT_VIEWS_SELECTED_SECTIONS_H
#define OVQT_VIEWS_SELECTED_SECTIONS_H

#include <vector>

#include <QItemSelection>

// Told from the ranges of the selection. The toolkit asks the model about every cell of a column instead,
// which takes seconds where all of ten million rows are selected. Of a table in which some cells can't be
// selected this would not be the same.
class SelectedSections
{
public:
    SelectedSections() = default; // of no selection

    // The sections from `first` to `last` (columns, or rows where `orientation` is vertical) of a table with
    // `across` cells in each.
    SelectedSections(const QItemSelection &selection, Qt::Orientation orientation, int first, int last,
                     int across);

    bool touches(int section) const { return stateOf(section) != Untouched; }
    bool covers(int section) const { return stateOf(section) == Covered; }

private:
    enum State : char { Untouched, Touched, Covered };

    State stateOf(int section) const
    {
        const auto place = static_cast<std::size_t>(section - m_first);
        return section >= m_first && place < m_states.size() ? m_states[place] : Untouched;
    }

    int m_first = 0;
    std::vector<State> m_states;
};

#endif
