#include "library_reason.h"

#include <QRegularExpression>
#include <cstdlib>
#include <memory>

#include <orvane/util.h>

namespace {

const QLatin1String paragraph(":\n\n");
const QLatin1String noView("OrvaneDatabaseModel::");

QStringList linesOf(const QString &text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

// The text is "CONNECTION'S LINE:\n\nMESSAGE:\n\nREASON\n\nQOvServer::process: ...", the reason with the
// paragraph mark before it only where the library was asked for it.
QString libraryReason(const QString &errorText)
{
    const QLatin1String connection("QOvConnection::request: ");
    if (errorText.startsWith(noView)) {
        const int mark = errorText.indexOf(paragraph);
        return mark < 0 ? QString() : errorText.mid(mark + paragraph.size());
    }
    const int end = errorText.lastIndexOf(QLatin1String("\n\nQOvServer::process"));
    if (end < 0)
        return {};
    int message = 0;
    if (errorText.startsWith(connection))
        message = errorText.indexOf(paragraph) + paragraph.size();
    const int mark = errorText.indexOf(paragraph, message);
    const int reason = mark + paragraph.size();
    return mark >= 0 && reason < end ? errorText.mid(reason, end - reason) : QString();
}

QString noViewText(const char *method, const QString &tableName, const QString &reason)
{
    const QString text =
        noView + QLatin1String(method) + QStringLiteral(": No view of '%1' was made").arg(tableName);
    return reason.isEmpty() ? text : text + paragraph + reason;
}

QStringList loggedLines()
{
    if (elog_count() == 0)
        return {};
    const std::unique_ptr<char, decltype(&std::free)> text(elog_string(0), &std::free);
    return linesOf(QString::fromUtf8(text.get()));
}

LoggedSince::LoggedSince() : m_before(loggedLines()), m_count(elog_count()) {}

QString LoggedSince::take() const
{
    const std::unique_ptr<char, decltype(&std::free)> text(elog_string(m_count), &std::free);
    const QString lines = QString::fromUtf8(text.get());
    elog_clear();
    giveBackToLog(m_before);
    return lines;
}

void giveBackToLog(const QStringList &lines)
{
    static const QRegularExpression repeats(QStringLiteral(" \\(repeated \\d+ times\\)$"));
    QStringList different = lines;
    different.replaceInStrings(repeats, QString());
    different.removeDuplicates();
    for (const QString &line : qAsConst(different))
        elog_log("%s", line.toUtf8().constData());
}

void giveReasonBackToLog(const char *errorText)
{
    giveBackToLog(linesOf(libraryReason(QString::fromUtf8(errorText))));
}
