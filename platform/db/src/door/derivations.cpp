// dbsubset, dbsort, dbgroup, dbungroup, dbsever, dbseparate: views of one table.
#include "door/derivations.h"

#include "base/concat.h"
#include "operation/derive.h"

using namespace orvane;

namespace orvane {

Result<std::vector<std::string>> texts_of(const Tbl *list, const char *what)
{
    std::vector<std::string> texts;
    for (std::int64_t i = 0; i < maxtbl(list); ++i) {
        const auto *text = static_cast<const char *>(gettbl(list, i));
        if (!text)
            return Status(Code::Argument, concat("element ", i, " of the list of ", what, " is null"));
        texts.emplace_back(text);
    }
    return texts;
}

} // namespace orvane

namespace {

Status null_argument(const char *what)
{
    return Status(Code::Argument, concat(what, " is null"));
}

} // namespace

Dbptr dbsubset(Dbptr db, const char *expression, const char *view)
{
    return derived("dbsubset", db, view,
                   [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
                       if (!expression)
                           return null_argument("the expression");
                       return derive_subset(derivation, table, standing_on(db), expression);
                   });
}

Dbptr dbsort(Dbptr db, const Tbl *fields, int flags, const char *view)
{
    return derived(
        "dbsort", db, view, [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
            if (flags & ~(dbSORT_REVERSE | dbSORT_UNIQUE))
                return Status(Code::Argument, concat("there are no flags ", flags));
            const auto names = texts_of(fields, "fields");
            if (!names.ok())
                return names.status();
            return derive_sort(derivation, table, standing_on(db), *names,
                               SortFlags{(flags & dbSORT_REVERSE) != 0, (flags & dbSORT_UNIQUE) != 0});
        });
}

Dbptr dbgroup(Dbptr db, const Tbl *fields, const char *view, int type)
{
    return derived(
        "dbgroup", db, view, [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
            if (type != 1)
                return Status(Code::Argument, concat("there is no type ", type, " of groups; it is 1"));
            const auto names = texts_of(fields, "fields");
            if (!names.ok())
                return names.status();
            return derive_group(derivation, table, standing_on(db), *names);
        });
}

Dbptr dbungroup(Dbptr db, const char *view)
{
    return derived("dbungroup", db, view, [&](Derivation &derivation, const auto &table) {
        return derive_ungroup(derivation, table);
    });
}

Dbptr dbsever(Dbptr db, const char *table_name, const char *view)
{
    return derived("dbsever", db, view,
                   [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
                       if (!table_name)
                           return null_argument("the table to sever");
                       return derive_sever(derivation, table, table_name);
                   });
}

Dbptr dbseparate(Dbptr db, const char *table_name)
{
    return derived("dbseparate", db, nullptr,
                   [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
                       if (!table_name)
                           return null_argument("the table to separate");
                       return derive_separate(derivation, table, table_name);
                   });
}
