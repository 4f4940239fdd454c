// dbset_change_hook, dbbegin_step and dbend_step.
#include "door/change_hook.h"

namespace orvane {

namespace {

struct ChangeHook {
    dbchange_hook call = nullptr;
    void *data = nullptr;
};

ChangeHook hook;

// Changes of one step have its number; one that belongs to none has one of its own.
std::uint64_t last_step = 0;
int open_steps = 0;

int kind_of(RecordChange::Kind kind)
{
    switch (kind) {
    case RecordChange::Kind::Values:
        return dbCHANGED_VALUES;
    case RecordChange::Kind::Mark:
        return dbCHANGED_MARKS;
    case RecordChange::Kind::Add:
        return dbCHANGED_ADDED;
    case RecordChange::Kind::Renumbering:
        break;
    }
    return dbCHANGED_NUMBERS;
}

} // namespace

ChangeListener change_listener(std::int64_t database_index, const Database &database)
{
    if (!hook.call)
        return {};
    // A call that changes a table window by window is one step, also where nobody began one.
    return [database_index, &database,
            step = open_steps > 0 ? last_step : ++last_step](const RecordChange &change) {
        DbChange told{};
        told.kind = kind_of(change.kind);
        told.place = {database_index, database.schema().relation_index(change.relation.name),
                      change.field >= 0 ? std::int64_t{change.field} : std::int64_t{dbALL}, dbALL};
        told.numbering = static_cast<std::int64_t>(change.generation);
        told.step = step;
        told.whole_records = change.whole_records ? 1 : 0;
        told.count = change.records.size();
        told.records = change.records.data();
        told.length = change.after.size();
        told.before = change.before.data();
        told.after = change.after.data();
        hook.call(&told, hook.data);
    };
}

} // namespace orvane

using namespace orvane;

void dbset_change_hook(dbchange_hook call, void *data)
{
    hook = ChangeHook{call, data};
}

void dbbegin_step(void)
{
    if (open_steps++ == 0)
        ++last_step;
}

void dbend_step(void)
{
    if (open_steps > 0)
        --open_steps;
}
