// What every call that changes records has in common.
#pragma once

#include "base/concat.h"
#include "door/change_hook.h"
#include "door/guard.h"
#include "door/subject.h"
#include "operation/derivation.h"

#include <optional>

namespace orvane {

// The table, and that nothing else runs in the database.
struct Change {
    Change(const Dbptr &db, const char *call)
        : work(call), status(find_subject(db, Level::Table, call, subject))
    {
        if (!status.ok())
            return;
        running.emplace(*subject.database);
        status = running->status().ok() ? Status() : named(running->status());
        listener = change_listener(db.database, *subject.database);
        work.set_listener(listener ? &listener : nullptr);
    }
    Change(const Change &) = delete;
    Change &operator=(const Change &) = delete;

    Status named(const Status &failure) const
    {
        return failure.ok() ? failure : named_failure(work.call(), failure);
    }
    std::int64_t answer(const Result<std::int64_t> &result) const
    {
        return result.ok() ? *result : static_cast<std::int64_t>(code_of(named(result.status())));
    }

    Work work;
    Subject subject;
    Status status;
    std::optional<OperationGuard> running;
    ChangeListener listener;
};

// A value of the C interface, of any type.
Result<FieldValue> value_of(const DbValue *value);

// The field of the table that a change is about: `name`, or where that is null the one pointed to.
Result<std::size_t> field_of(const Subject &subject, const char *name);

} // namespace orvane
