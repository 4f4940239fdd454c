// What failed requests say, for people.
#ifndef OVEDIT_ERROR_TEXT_H
#define OVEDIT_ERROR_TEXT_H

#include <QString>

// Whether a text is that of a failed request: paragraphs, some of which tell through which layers it has
// come.
bool isRequestFailure(const QString &error);

// What the database library says in it, without those paragraphs, and without those that begin with `leave`.
QString reasonIn(const QString &error, const QString &leave = QString());

// "dbsubset: unknown field `stx`" without the name of the call, and with quotes as people write them.
QString withoutCall(const QString &line);

// The reason as rich text: paragraphs; lines with a caret under a place in the letters of a typewriter.
QString richReason(const QString &reason);

#endif
