#include "tooltip_rows.h"

#include <algorithm>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <qdbptr.h>

namespace tooltip {

namespace {

struct TypeName {
    int type;
    const char *name;
};
constexpr TypeName typeNames[] = {{dbBOOLEAN, "boolean"}, {dbINTEGER, "integer"}, {dbREAL, "real"},
                                  {dbTIME, "time"},       {dbYEARDAY, "yearday"}, {dbSTRING, "string"},
                                  {dbDBPTR, "dbptr"}};

QString typeName(int type)
{
    const auto *found = std::find_if(std::begin(typeNames), std::end(typeNames),
                                     [type](const TypeName &entry) { return entry.type == type; });
    return QLatin1String(found == std::end(typeNames) ? "unknown" : found->name);
}

QString shownName(QDbptr &dbptr, const QString &name)
{
    const bool ofSeveralTables = dbptr.tableIsView() && dbptr.getViewTables().size() > 1;
    return ofSeveralTables ? dbptr.getFieldBaseTable() + "." + name : name;
}

// How a field takes part in the keys of its table: by itself, or else as one end of a range,
// "ondate::offdate".
QString keyText(QDbptr &dbptr, const QString &name)
{
    const struct {
        const char *kind;
        QStringList elements;
    } keys[] = {{OvTranslation::noop("Primary"), dbptr.getPrimaryKey()},
                {OvTranslation::noop("Alternate"), dbptr.getAlternateKey()},
                {OvTranslation::noop("Foreign"), dbptr.getForeignKeys()}};
    for (const auto &key : keys) {
        if (key.elements.contains(name))
            return OvTranslation::tr(key.kind);
    }
    for (const auto &key : keys) {
        for (const QString &element : key.elements) {
            if (element.contains(name + "::") || element.contains("::" + name))
                return OvTranslation::tr(key.kind) + " (<i>" + element + "</i>)";
        }
    }
    return {};
}

} // namespace

QString ofField(QDbptr &dbptr)
{
    const QString name = dbptr.getFieldName();
    const qint64 size = number(dbptr, "field_size");
    const qint64 first = number(dbptr, "field_index");
    QString text = "<table>\n<tr><td width=160><b>" + label(OvTranslation::noop("Field")) +
                   "</b></td><td width=250><b><i>" + shownName(dbptr, name) + "</i></b></td></tr>\n";
    text += fieldRow(OvTranslation::noop("Description"), dbptr.getFieldDescription()) + "\n";
    text += fieldRow(OvTranslation::noop("Type"), typeName(dbptr.getFieldType()));
    text += "<tr><td><b>Size:</td><td>" + QString::number(size) + " bytes</td></tr>\n";
    text += fieldRow(OvTranslation::noop("Format"), dbptr.getFieldFormat());
    // The second number is the one after the last byte: meant.
    text += fieldRow(OvTranslation::noop("Position in row"),
                     QString::number(first) + "-" + QString::number(first + size) + " (zero offset)");
    text += fieldRow(OvTranslation::noop("Range"), dbptr.getFieldRange().replace("<", "&lt;"));
    text += fieldRows(dbptr, {{OvTranslation::noop("Units"), &QDbptr::getFieldUnits},
                              {OvTranslation::noop("Null value"), &QDbptr::getFieldNull}});
    text += "<tr><td><b>" + label(OvTranslation::noop("Defining for table")) + "</td><td><i>" +
            dbptr.getLinkFieldTables().value(name) + "</i></td></tr>\n";
    text += "<tr><td><b>" + OvTranslation::tr("Key type for") + " '<i>" + dbptr.getTableName() +
            "</i>':</td><td>" + keyText(dbptr, name) + "</td></tr>\n";
    text += fieldRow(OvTranslation::noop("Column empty"),
                     dbptr.columnIsProbablyNull() ? OvTranslation::tr("Probably") : QStringLiteral("No"));
    text += "</table>\n<br/><br/>\n<b>" + label(OvTranslation::noop("Detailed description")) + "</b>\n";
    return text + "<pre>" + dbptr.getFieldDetail() + "</pre>\n";
}

} // namespace tooltip
