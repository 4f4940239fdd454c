#ifndef REQUEST_VOCABULARY_H
#define REQUEST_VOCABULARY_H

#include <QString>

struct RequestCall;

/* What the handle of a request must be and point to. */
enum class PointerLevel {
    NoHandle, /* the handle is not looked at, and may be null */
    Any,      /* a valid handle */
    Table,
    Field
};

/* Which of the two conditions is tested, and so reported, first. */
enum class CheckOrder { CountFirst, PointerFirst };

using RequestHandler = void (*)(const RequestCall &);

/* One request: its conditions and what answers it. */
struct RequestRow {
    static constexpr int AnyArguments = -1;

    const char *name;
    RequestHandler handler;
    PointerLevel level = PointerLevel::Any;
    int argumentCount = AnyArguments;
    const char *expected = ""; /* the arguments in words, for the count message */
    CheckOrder order = CheckOrder::CountFirst;
    /* For requests that are one query of the library: its code. */
    int queryCode = 0;
    /* The message when the library fails, where a failure is an error and not just an empty answer, and the
     * message is always the same. */
    const char *failure = nullptr;
};

/* The row of a request, or null when there is no such request. */
const RequestRow *findRequest(const QString &name);

#endif
