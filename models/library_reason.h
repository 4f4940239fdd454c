#ifndef OVQT_MODELS_LIBRARY_REASON_H
#define OVQT_MODELS_LIBRARY_REASON_H

#include <QStringList>

// A request that fails takes the library's error log into the text of its exception and empties the log. Who
// swallows the exception gives the lines back, for whoever collects them there.

// What the library said, out of the text of a failed request or of a view that was not made; empty when the
// library had no part in it.
QString libraryReason(const QString &errorText);

// The lines of the error log, which stays as it is.
QStringList loggedLines();

// The lines logged while it lives can be told from those before.
class LoggedSince
{
public:
    LoggedSince();

    // Takes the lines logged since out of the log, which then has those before again.
    QString take() const;

private:
    QStringList m_before;
    qint64 m_count;
};

// The text of what is thrown when no view was made, for libraryReason() to understand.
QString noViewText(const char *method, const QString &tableName, const QString &reason);

// Appends lines to the error log, each different one once. Said again and again the log would otherwise grow
// with every failure, for a failure takes and gives back what those before it gave back.
void giveBackToLog(const QStringList &lines);

// Gives back to the log what a failed request took from it.
void giveReasonBackToLog(const char *errorText);

#endif
