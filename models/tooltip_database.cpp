#include "tooltip_rows.h"

#include <orvane/tr.h>
#include <qdbptr.h>
#include <qovconnection.h>

namespace tooltip {

QString ofDatabase(QDbptr &dbptr)
{
    QString text = "<table>\n" + headRow(OvTranslation::noop("Database name"), dbptr.getDatabaseName());
    text += plainRows(dbptr, {{OvTranslation::noop("Database dbpath"), &QDbptr::getDbPath}}) + spacer();
    text += plainRow(OvTranslation::noop("Launch path"), dbptr.getConnection()->getLaunchDbName());
    text += plainRows(dbptr, {{OvTranslation::noop("Absolute path"), &QDbptr::getDatabaseAbspath}});
    // The two names are those of the descriptor's entries and are not translated.
    text += "<tr><td><b>Dblocks:</b></td><td>" + dbptr.getDbLocks() + "</td></tr>\n";
    text += "<tr><td><b>Dbidserver:</b></td><td>" + dbptr.getDbIdServer() + "</td></tr>\n" + spacer();
    text += plainRows(dbptr, {{OvTranslation::noop("Schema"), &QDbptr::getSchemaName},
                              {OvTranslation::noop("Schema description"), &QDbptr::getSchemaDescription},
                              {OvTranslation::noop("Timestamp field"), &QDbptr::getTimedateName}});
    text += "</table>\n<br/>\n<br/>\n<b>" + label(OvTranslation::noop("Schema detail")) + "</b>\n";
    return text + "<pre>" + dbptr.getSchemaDetail() + "</pre>";
}

} // namespace tooltip
