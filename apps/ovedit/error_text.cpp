#include "error_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

const QString paragraphEnd = QStringLiteral("\n\n");

bool isFrame(const QString &paragraph)
{
    return paragraph.startsWith("QOv");
}

QString capitalised(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

} // namespace

QString withoutCall(const QString &line)
{
    static const QRegularExpression call("^(db[a-z_]+|OVdb[a-z_]+): ");
    static const QRegularExpression quoted("`([^`]*)`");
    QString text = line;
    text.remove(call);
    return text.replace(quoted, QStringLiteral("'\\1'"));
}

bool isRequestFailure(const QString &error)
{
    return error.startsWith("QOvConnection::") || error.contains("\n\nQOvServer::process");
}

QString reasonIn(const QString &error, const QString &leave)
{
    QStringList told;
    for (const QString &paragraph : error.split(paragraphEnd, Qt::SkipEmptyParts)) {
        if (!isFrame(paragraph) && (leave.isEmpty() || !paragraph.startsWith(leave))) {
            told.append(paragraph.trimmed());
        }
    }
    return told.isEmpty() ? error.trimmed() : told.join(paragraphEnd);
}

QString richReason(const QString &reason)
{
    QString html;
    for (const QString &paragraph : reason.split(paragraphEnd, Qt::SkipEmptyParts)) {
        QStringList sentences, places;
        for (const QString &line : paragraph.split('\n')) {
            // The library indents the text that it shows a place of.
            (line.startsWith("  ") ? places : sentences).append(line);
        }
        for (const QString &sentence : qAsConst(sentences)) {
            const QString ended = sentence.endsWith(':') ? sentence.chopped(1) + "." : sentence;
            html += "<p>" + capitalised(withoutCall(ended)).toHtmlEscaped() + "</p>";
        }
        if (!places.isEmpty()) {
            html += "<pre>" + places.join('\n').toHtmlEscaped() + "</pre>";
        }
    }
    return html;
}
