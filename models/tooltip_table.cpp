#include "tooltip_rows.h"

#include <cstdlib>
#include <memory>

#include "qovutil.h"
#include <orvane/tr.h>
#include <orvane/util.h>
#include <qdbptr.h>

namespace tooltip {

namespace {

using OwnedText = std::unique_ptr<char, decltype(&std::free)>;

// In steps of 1024. The last step keeps the word of the one before it: meant.
QString byteCount(qint64 bytes)
{
    static constexpr const char *units[] = {"kilobytes", "megabytes", "gigabytes", "gigabytes"};
    if (bytes > 1023) {
        double size = static_cast<double>(bytes);
        for (const char *unit : units) {
            size /= 1024;
            if (size < 1024)
                return QString::asprintf("%.1f ", size) + QLatin1String(unit);
        }
    }
    return QString::number(bytes) + " bytes";
}

// "1.5 minutes", with its unit translated.
QString spoken(const QString &age)
{
    [[maybe_unused]] static constexpr const char *units[] = {
        OvTranslation::noop("second"),  OvTranslation::noop("seconds"), OvTranslation::noop("minute"),
        OvTranslation::noop("minutes"), OvTranslation::noop("hour"),    OvTranslation::noop("hours"),
        OvTranslation::noop("day"),     OvTranslation::noop("days"),    OvTranslation::noop("year"),
        OvTranslation::noop("years")};
    const int unit = age.indexOf(' ') + 1;
    return age.left(unit) + OvTranslation::tr(age.mid(unit).toUtf8().constData());
}

QString modified(double time)
{
    const OwnedText clock(strlocaltime(time), &std::free);
    const OwnedText age(strtdelta(std_now() - time), &std::free);
    return QString::fromUtf8(clock.get()) + "(" +
           OvTranslation::tr("%1 ago").arg(spoken(QString::fromUtf8(strtrim(age.get())))) + ")";
}

QString creationHistory(const QString &creation)
{
    static constexpr const char *operations[] = {
        "dbopen",  "dbjoin", "dbgroup",  "dbleftjoin", "dbnojoin",  "dbselect", "dbseparate",
        "dbsever", "dbsort", "dbsubset", "dbtheta",    "dbungroup", "dbunjoin"};
    QString history = creation.toHtmlEscaped();
    for (const char *operation : operations)
        history.replace("\n" + QString(operation), "<br/>" + QString(operation));
    return history;
}

QString heading(const QString &name, const char *kind)
{
    return "<table>\n<tr><td width=160><b>" + label(OvTranslation::noop("Table")) +
           "</b></td><td width=400><b><i>" + name + "</i></b></td></tr>\n" +
           headRow(OvTranslation::noop("Table type"), OvTranslation::tr(kind));
}

QString ofView(QDbptr &dbptr)
{
    QString text = heading(dbptr.getTableName(), OvTranslation::noop("View")) + spacer();
    text += plainRow(OvTranslation::noop("Record count"), recordCount(dbptr)) + spacer();
    text += plainRow(OvTranslation::noop("View tables"), qovutil_stringList2QString(dbptr.getViewTables())) +
            spacer();
    text += "<tr><td><b>" + label(OvTranslation::noop("Table creation")) + "</b></td><td><b><i>" +
            creationHistory(dbptr.getTableCreation()) + "</i></b></td></tr>\n";
    return text; // The table is left open: meant.
}

QString ofBaseTable(QDbptr &dbptr)
{
    QString text = heading(dbptr.getTableName(), OvTranslation::noop("Base Table"));
    text += plainRows(dbptr, {{OvTranslation::noop("Description"), &QDbptr::getTableDescription},
                              {OvTranslation::noop("File"), &QDbptr::getTableFilename}});
    text +=
        plainRow(OvTranslation::noop("Unix permissions"),
                 dbptr.tableIsWritable() ? OvTranslation::tr("Read/Write") : OvTranslation::tr("Read-only"));
    text += plainRow(OvTranslation::noop("Modified"), modified(dbptr.getTableModTime())) + spacer();
    text += plainRow(OvTranslation::noop("Table size"), byteCount(number(dbptr, "table_size")));
    text += plainRow(OvTranslation::noop("Record size"), QString::number(number(dbptr, "record_size")) + " " +
                                                             OvTranslation::tr("bytes per record"));
    text += plainRow(OvTranslation::noop("Record count"), recordCount(dbptr)) + spacer();
    text += plainRow(OvTranslation::noop("Primary keys"), qovutil_stringList2QString(dbptr.getPrimaryKey()));
    text +=
        plainRow(OvTranslation::noop("Alternate keys"), qovutil_stringList2QString(dbptr.getAlternateKey()));
    text += plainRow(OvTranslation::noop("Foreign keys"), qovutil_stringList2QString(dbptr.getForeignKeys()));
    text += "<tr><td><b>" + label(OvTranslation::noop("Defines")) + "</b></td><td><i>" +
            dbptr.getUniqueIdName() + "</i></td></tr>\n";
    text += "</table>\n<br/><br/>\n<b>" + label(OvTranslation::noop("Detailed description")) + "</b>\n";
    return text + "<pre>" + dbptr.getTableDetail() + "</pre>\n";
}

} // namespace

QString ofTable(QDbptr &dbptr)
{
    return dbptr.tableIsView() ? ofView(dbptr) : ofBaseTable(dbptr);
}

} // namespace tooltip
