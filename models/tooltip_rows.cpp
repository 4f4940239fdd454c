#include "tooltip_rows.h"

#include <orvane/tr.h>
#include <qdbptr.h>
#include <qovresponse.h>

namespace tooltip {

QString label(const char *text)
{
    const QString name = OvTranslation::tr(text);
    return name + OvTranslation::tr(":");
}

QString headRow(const char *labelText, const QString &value)
{
    return "<tr><td width=160><b>" + label(labelText) + "</b></td><td width=400>" + value + "</td></tr>\n";
}

QString plainRow(const char *labelText, const QString &value)
{
    return "<tr><td><b>" + label(labelText) + "</b></td><td>" + value + "</td></tr>\n";
}

QString fieldRow(const char *labelText, const QString &value)
{
    return "<tr><td><b>" + label(labelText) + "</td><td>" + value + "</td></tr>\n";
}

QString spacer()
{
    return QStringLiteral("<tr></tr>\n");
}

QString plainRows(QDbptr &dbptr, std::initializer_list<Question> questions)
{
    QString rows;
    for (const Question &question : questions)
        rows += plainRow(question.labelText, (dbptr.*question.ask)());
    return rows;
}

QString fieldRows(QDbptr &dbptr, std::initializer_list<Question> questions)
{
    QString rows;
    for (const Question &question : questions)
        rows += fieldRow(question.labelText, (dbptr.*question.ask)());
    return rows;
}

qint64 number(QDbptr &dbptr, const char *request)
{
    return dbptr.request(QLatin1String(request))->toLongLong();
}

QString recordCount(QDbptr &dbptr)
{
    const qint64 count = number(dbptr, "record_count");
    return QString::number(count) + " " +
           (count == 1 ? OvTranslation::tr("record") : OvTranslation::tr("records"));
}

} // namespace tooltip
