#include "library_spy.h"

#include <cstring>
#include <stdexcept>

#include <dlfcn.h>

#include <orvane/util.h>

namespace {

LibrarySpy *spy = nullptr;

// The library's own function behind one that this file defines.
template <class Function>
Function *original(const char *name)
{
    void *symbol = dlsym(RTLD_NEXT, name);
    if (!symbol)
        throw std::logic_error(std::string("no ") + name);
    return reinterpret_cast<Function *>(symbol);
}

std::optional<std::string> named(const char *view)
{
    return view ? std::optional<std::string>(view) : std::nullopt;
}

std::vector<std::string> textsOf(const Tbl *list)
{
    std::vector<std::string> texts;
    for (int64_t i = 0; i < maxtbl(list); ++i)
        texts.emplace_back(static_cast<const char *>(gettbl(list, i)));
    return texts;
}

// Records a call, and answers it in the library's place when the test wants that.
template <class Library>
Dbptr viewOf(OperationCall call, Library library)
{
    if (!spy)
        return library();
    spy->operations.push_back(std::move(call));
    if (spy->onView)
        if (const auto view = spy->onView(spy->operations.back()))
            return *view;
    return library();
}

} // namespace

LibrarySpy::LibrarySpy()
{
    if (spy)
        throw std::logic_error("two spies");
    spy = this;
}

LibrarySpy::~LibrarySpy()
{
    spy = nullptr;
}

void LibrarySpy::failViews()
{
    onView = [](const OperationCall &call) {
        elog_log("no %s today", call.operation.c_str());
        return dbinvalid();
    };
}

void LibrarySpy::failQueries(int code)
{
    onQuery = [code](Dbptr, int asked, void *) -> std::optional<int> {
        if (asked != code)
            return {};
        elog_log("the disk is on fire");
        return dbERROR_IO;
    };
}

void LibrarySpy::answerQueries(int code, int64_t number)
{
    onQuery = [code, number, next = onQuery](Dbptr db, int asked, void *answer) -> std::optional<int> {
        if (asked != code)
            return next ? next(db, asked, answer) : std::nullopt;
        *static_cast<int64_t *>(answer) = number;
        return 0;
    };
}

void LibrarySpy::answerQueries(int code, std::vector<const char *> names)
{
    onQuery = [code, names, next = onQuery](Dbptr db, int asked, void *answer) -> std::optional<int> {
        if (asked != code)
            return next ? next(db, asked, answer) : std::nullopt;
        *static_cast<Tbl **>(answer) = listOf(names);
        return 0;
    };
}

Tbl *listOf(const std::vector<const char *> &texts)
{
    Tbl *list = newtbl(0);
    for (const char *text : texts)
        pushtbl(list, text ? strdup(text) : nullptr);
    return list;
}

// Defined in the test program, these are found before those of the library.
extern "C" {

int dbquery(Dbptr db, int code, void *answer)
{
    static const auto library = original<decltype(dbquery)>("dbquery");
    if (spy) {
        spy->queries.push_back(code);
        if (spy->onQuery)
            if (const auto result = spy->onQuery(db, code, answer))
                return *result;
    }
    return library(db, code, answer);
}

int64_t dbget(Dbptr db, char *buffer, size_t capacity)
{
    static const auto library = original<decltype(dbget)>("dbget");
    if (spy)
        ++spy->reads;
    return library(db, buffer, capacity);
}

int dbgetv(Dbptr db, const char *field, DbValue *value)
{
    static const auto library = original<decltype(dbgetv)>("dbgetv");
    if (spy && spy->onGetv)
        if (const auto result = spy->onGetv(db, value))
            return *result;
    return library(db, field, value);
}

int dbget_range(Dbptr db, int64_t *first, int64_t *end)
{
    static const auto library = original<decltype(dbget_range)>("dbget_range");
    if (spy && spy->onRange)
        if (const auto result = spy->onRange(db, first, end))
            return *result;
    return library(db, first, end);
}

int OVdbclose(Dbptr db)
{
    static const auto library = original<decltype(OVdbclose)>("OVdbclose");
    if (spy && spy->onClose)
        if (const auto result = spy->onClose(db))
            return *result;
    return library(db);
}

int dbfind_join_keys(Dbptr left, Dbptr right, Tbl **left_keys, Tbl **right_keys)
{
    static const auto library = original<decltype(dbfind_join_keys)>("dbfind_join_keys");
    if (spy && spy->onJoinKeys)
        if (const auto result = spy->onJoinKeys(left_keys, right_keys))
            return *result;
    return library(left, right, left_keys, right_keys);
}

int dbfind_join_tables(Dbptr db, Tbl **tables)
{
    static const auto library = original<decltype(dbfind_join_tables)>("dbfind_join_tables");
    if (spy && spy->onJoinTables)
        if (const auto result = spy->onJoinTables(tables))
            return *result;
    return library(db, tables);
}

Dbptr dbsort(Dbptr db, const Tbl *fields, int flags, const char *view)
{
    static const auto library = original<decltype(dbsort)>("dbsort");
    return viewOf(
        {.operation = "dbsort", .left = db, .fields = textsOf(fields), .number = flags, .view = named(view)},
        [&] { return library(db, fields, flags, view); });
}

Dbptr dbgroup(Dbptr db, const Tbl *fields, const char *view, int type)
{
    static const auto library = original<decltype(dbgroup)>("dbgroup");
    return viewOf(
        {.operation = "dbgroup", .left = db, .fields = textsOf(fields), .number = type, .view = named(view)},
        [&] { return library(db, fields, view, type); });
}

Dbptr dbungroup(Dbptr db, const char *view)
{
    static const auto library = original<decltype(dbungroup)>("dbungroup");
    return viewOf({.operation = "dbungroup", .left = db, .view = named(view)},
                  [&] { return library(db, view); });
}

Dbptr dbsubset(Dbptr db, const char *expression, const char *view)
{
    static const auto library = original<decltype(dbsubset)>("dbsubset");
    return viewOf({.operation = "dbsubset", .left = db, .text = expression, .view = named(view)},
                  [&] { return library(db, expression, view); });
}

Dbptr dbjoin(Dbptr left, Dbptr right, const Tbl *leftKeys, const Tbl *rightKeys, int outer,
             const Tbl *bothKeys, const char *view)
{
    static const auto library = original<decltype(dbjoin)>("dbjoin");
    return viewOf({.operation = "dbjoin",
                   .left = left,
                   .right = right,
                   .number = outer,
                   .view = named(view),
                   .hasKeysOrHook = leftKeys || rightKeys || bothKeys},
                  [&] { return library(left, right, leftKeys, rightKeys, outer, bothKeys, view); });
}

Dbptr dbnojoin(Dbptr left, Dbptr right, const Tbl *leftKeys, const Tbl *rightKeys, const char *view)
{
    static const auto library = original<decltype(dbnojoin)>("dbnojoin");
    return viewOf({.operation = "dbnojoin",
                   .left = left,
                   .right = right,
                   .view = named(view),
                   .hasKeysOrHook = leftKeys || rightKeys},
                  [&] { return library(left, right, leftKeys, rightKeys, view); });
}

Dbptr dbtheta(Dbptr left, Dbptr right, const char *expression, const char *view)
{
    static const auto library = original<decltype(dbtheta)>("dbtheta");
    return viewOf(
        {.operation = "dbtheta", .left = left, .right = right, .text = expression, .view = named(view)},
        [&] { return library(left, right, expression, view); });
}

Dbptr dbsever(Dbptr db, const char *table, const char *view)
{
    static const auto library = original<decltype(dbsever)>("dbsever");
    return viewOf({.operation = "dbsever", .left = db, .text = table, .view = named(view)},
                  [&] { return library(db, table, view); });
}

Dbptr dbseparate(Dbptr db, const char *table)
{
    static const auto library = original<decltype(dbseparate)>("dbseparate");
    return viewOf({.operation = "dbseparate", .left = db, .text = table}, [&] { return library(db, table); });
}

int64_t dbfind(Dbptr db, const char *expression, int backwards, dbprogress_hook hook)
{
    static const auto library = original<decltype(dbfind)>("dbfind");
    if (spy)
        spy->operations.push_back({.operation = "dbfind",
                                   .left = db,
                                   .text = expression,
                                   .number = backwards,
                                   .hasKeysOrHook = hook != nullptr});
    return library(db, expression, backwards, hook);
}
}
