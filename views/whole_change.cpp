#include "whole_change.h"

WholeChange::WholeChange(OrvaneTableModel &table)
    : m_putBack(keeper() ? keeper()(table) : OrvaneTableView::PutBack())
{
}

OrvaneTableView::ChangeKeeper &WholeChange::keeper()
{
    static OrvaneTableView::ChangeKeeper kept;
    return kept;
}

void OrvaneTableView::setChangeKeeper(ChangeKeeper keeper)
{
    WholeChange::keeper() = std::move(keeper);
}
