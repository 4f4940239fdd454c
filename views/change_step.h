// The changes of records while it lives are one step for who takes changes back.
#ifndef OVQT_VIEWS_CHANGE_STEP_H
#define OVQT_VIEWS_CHANGE_STEP_H

#include <orvane/db.h>

class ChangeStep
{
public:
    ChangeStep() { dbbegin_step(); }
    ~ChangeStep() { dbend_step(); }
    ChangeStep(const ChangeStep &) = delete;
    ChangeStep &operator=(const ChangeStep &) = delete;
};

#endif
