#include <qdbptr.h>

#include <stdexcept>

#include "answer_conversion.h"

namespace {

// "dbsample" answers [all null, width in characters].
QList<QVariant> sampleOf(QDbptr *field, const char *method)
{
    requireHandle(field, method);
    return field->request(QStringLiteral("dbsample"))->toList();
}

} // namespace

QString QDbptr::dbGet(bool scratch)
{
    return answerTo<QString>(this, "dbGet", QStringLiteral("dbget"), {scratch});
}

QHash<QString, QVariant> QDbptr::dbGetv(QList<QString> fields)
{
    return answerTo<QHash<QString, QVariant>>(this, "dbGetv", QStringLiteral("dbgetv"),
                                              {QStringList(fields)});
}

QVariant QDbptr::dbGetv()
{
    requireHandle(this, "dbGetv");
    if (getDbptrType() != DbptrCell)
        return {};
    const QString name = getFieldName();
    const QHash<QString, QVariant> values = dbGetv(QList<QString>{name});
    const auto value = values.find(name);
    if (value == values.end())
        throw std::runtime_error("QDbptr::dbGetv: result does not contain expected field named '" +
                                 name.toStdString() + "'");
    return *value;
}

bool QDbptr::cellIsNull()
{
    requireHandle(this, "fieldIsNull"); // the name that callers know
    return getDbptrType() == DbptrCell && dbGet(false).trimmed() == getFieldNull();
}

bool QDbptr::fieldIsPrimary()
{
    requireHandle(this, "fieldIsPrimary");
    switch (getDbptrType()) {
    case DbptrInvalid:
    case DbptrDatabase:
    case DbptrTable:
        return false;
    default:
        return getPrimaryKey().contains(getFieldName());
    }
}

bool QDbptr::columnIsProbablyNull()
{
    return sampleOf(this, "columnIsProbablyNull").value(0).toBool();
}

int QDbptr::columnApproxWidthChars()
{
    return sampleOf(this, "columnApproxWidthChars").value(1).toInt();
}

QList<QString> QDbptr::getNonNullTableFields()
{
    requireHandle(this, "getNonNullTableFields");
    QList<QString> fields = getTableFields();
    QList<QString> probablyNull;
    for (const QString &name : qAsConst(fields)) {
        const std::unique_ptr<QDbptr> field(lookupField(name));
        if (field->columnIsProbablyNull())
            probablyNull.append(name);
    }
    for (const QString &name : qAsConst(probablyNull))
        fields.removeOne(name);
    return fields;
}

QMap<QString, QList<QStringList>> QDbptr::findJoinTablesPresent()
{
    requireHandle(this, "findJoinTablesPresent");
    const QVariantMap keysByTable = request(QStringLiteral("find_join_tables_present"))->toMap();
    QMap<QString, QList<QStringList>> result;
    for (auto entry = keysByTable.begin(); entry != keysByTable.end(); ++entry) {
        const QVariantList sides = entry.value().toList();
        result.insert(entry.key(), {QVariantListToQStringList(sides.value(0).toList()),
                                    QVariantListToQStringList(sides.value(1).toList())});
    }
    return result;
}

QDbptr *QDbptr::lookupTable(QString name)
{
    return handleFrom(this, "lookupTable", QStringLiteral("lookup_table"), {std::move(name)});
}

QDbptr *QDbptr::lookupTable(int index)
{
    return handleFrom(this, "lookupTable", QStringLiteral("lookup_table"), {index});
}

QDbptr *QDbptr::lookupField(QString name)
{
    return handleFrom(this, "lookupField", QStringLiteral("lookup_field"), {std::move(name)});
}

QDbptr *QDbptr::lookupField(int index)
{
    return handleFrom(this, "lookupField", QStringLiteral("lookup_field"), {index});
}

QDbptr *QDbptr::lookupRecord(int index)
{
    return handleFrom(this, "lookupRecord", QStringLiteral("lookup_record"), {index});
}

QList<QString> QDbptr::QVariantListToQStringList(QList<QVariant> list)
{
    QList<QString> texts;
    texts.reserve(list.size());
    for (const QVariant &element : qAsConst(list))
        texts.append(element.toString());
    return texts;
}
