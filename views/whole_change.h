// A command over many rows, which changes all of them or none where its host keeps what was there before.
#ifndef OVQT_VIEWS_WHOLE_CHANGE_H
#define OVQT_VIEWS_WHOLE_CHANGE_H

#include <orvanetableview.h>

#include "change_step.h"

// The changes while it lives are one step.
class WholeChange
{
public:
    explicit WholeChange(OrvaneTableModel &table);

    // Whether there is such a host.
    bool isKept() const { return static_cast<bool>(m_putBack); }

    // Puts back what was changed since. Answers why something of it is left; empty: the table is as it was.
    QString putBack() const { return m_putBack(); }

    // See OrvaneTableView::setChangeKeeper().
    static OrvaneTableView::ChangeKeeper &keeper();

private:
    const OrvaneTableView::PutBack m_putBack;
    const ChangeStep m_step;
};

#endif
