// dbjoin, dbnojoin, dbtheta: views of two tables.
#include "door/derivations.h"

#include "base/concat.h"
#include "operation/derive.h"

using namespace orvane;

namespace {

Result<std::shared_ptr<Table>> other_side(const Dbptr &left, const Dbptr &right)
{
    Subject subject;
    if (Status found = find_subject(right, Level::Table, "the other side", subject); !found.ok())
        return found;
    if (left.database != right.database)
        return Status(Code::Argument, "the tables are of different databases");
    return subject.database->shared_table(right.table);
}

Result<JoinKeyLists> key_lists(const Tbl *left, const Tbl *right, const Tbl *both)
{
    auto of_left = texts_of(left, "keys of the left side");
    if (!of_left.ok())
        return of_left.status();
    auto of_right = texts_of(right, "keys of the right side");
    if (!of_right.ok())
        return of_right.status();
    auto of_both = texts_of(both, "keys of both sides");
    if (!of_both.ok())
        return of_both.status();
    return JoinKeyLists{std::move(*of_left), std::move(*of_right), std::move(*of_both)};
}

} // namespace

Dbptr dbjoin(Dbptr left, Dbptr right, const Tbl *left_keys, const Tbl *right_keys, int outer,
             const Tbl *both_keys, const char *view)
{
    return derived(
        "dbjoin", left, view, [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
            const auto other = other_side(left, right);
            if (!other.ok())
                return other.status();
            const auto keys = key_lists(left_keys, right_keys, both_keys);
            if (!keys.ok())
                return keys.status();
            if (outer != 0 && outer != 1)
                return Status(Code::Argument, concat("outer is ", outer, " where 0 or 1 is expected"));
            return derive_join(derivation, table, *other, *keys, outer == 1);
        });
}

Dbptr dbnojoin(Dbptr left, Dbptr right, const Tbl *left_keys, const Tbl *right_keys, const char *view)
{
    return derived("dbnojoin", left, view,
                   [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
                       const auto other = other_side(left, right);
                       if (!other.ok())
                           return other.status();
                       const auto keys = key_lists(left_keys, right_keys, nullptr);
                       if (!keys.ok())
                           return keys.status();
                       return derive_nojoin(derivation, table, *other, *keys);
                   });
}

Dbptr dbtheta(Dbptr left, Dbptr right, const char *expression, const char *view)
{
    return derived("dbtheta", left, view,
                   [&](Derivation &derivation, const auto &table) -> Result<std::int64_t> {
                       const auto other = other_side(left, right);
                       if (!other.ok())
                           return other.status();
                       if (!expression)
                           return Status(Code::Argument, "the expression is null");
                       return derive_theta(derivation, table, *other, expression);
                   });
}
