#ifndef ORVANE_TESTS_LIBRARY_SPY_H
#define ORVANE_TESTS_LIBRARY_SPY_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <orvane/db.h>

/* A call that makes a view, or dbfind, as the library received it. */
struct OperationCall {
    std::string operation{}; /* "dbsort" */
    Dbptr left{};            /* the first pointer */
    Dbptr right{};           /* the second one of a join */
    std::vector<std::string> fields{};
    std::string text{}; /* an expression or the name of a table */
    int number = 0;     /* flags, type, outer or backwards */
    std::optional<std::string> view{};
    bool hasKeysOrHook = false; /* a list of join keys, or a progress hook */
};

/* Stands between the engine and the database library while it lives: counts calls, and lets a test answer in
 * the library's place (a failure, a view, a null key) by returning the call's result; otherwise the library
 * answers. One at a time. */
class LibrarySpy
{
public:
    LibrarySpy();
    ~LibrarySpy();
    LibrarySpy(const LibrarySpy &) = delete;
    LibrarySpy &operator=(const LibrarySpy &) = delete;

    std::function<std::optional<int>(Dbptr db, int code, void *answer)> onQuery;
    std::function<std::optional<int>(Dbptr db)> onClose;
    std::function<std::optional<int>(Dbptr db, DbValue *value)> onGetv;
    std::function<std::optional<int>(Dbptr db, int64_t *first, int64_t *end)> onRange;
    std::function<std::optional<int>(Tbl **left, Tbl **right)> onJoinKeys;
    std::function<std::optional<int>(Tbl **tables)> onJoinTables;
    std::function<std::optional<Dbptr>(const OperationCall &)> onView;

    /* Fails every making of a view, with a line in the error log. */
    void failViews();
    /* Fails every query of one code, with a line in the error log. */
    void failQueries(int code);
    /* Answers every query of one code with a number. */
    void answerQueries(int code, int64_t number);
    /* Answers every query of one code with a list of these texts. */
    void answerQueries(int code, std::vector<const char *> names);

    std::vector<int> queries;              /* codes, in order */
    int reads = 0;                         /* calls of dbget */
    std::vector<OperationCall> operations; /* in order */
};

/* A list as the library hands it over: the texts are copies, the list is the receiver's. */
Tbl *listOf(const std::vector<const char *> &texts);

#endif
