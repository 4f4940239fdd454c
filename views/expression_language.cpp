#include "expression_language.h"

#include <cstdlib>

#include <QByteArray>

namespace {

QString answer(const Dbptr &db, int code)
{
    const char *text = nullptr;
    return dbquery(db, code, &text) < 0 ? QString() : QString::fromUtf8(text);
}

// Characters of the text before a byte of it.
int charactersBefore(const QByteArray &text, size_t bytes)
{
    return QString::fromUtf8(text.constData(), qMin(static_cast<int>(bytes), text.size())).size();
}

} // namespace

QList<ExpressionField> expressionFields(const Dbptr &table)
{
    int64_t count = 0;
    QList<ExpressionField> fields;
    if (table.table < 0 || dbquery(table, dbFIELD_COUNT, &count) < 0) {
        return fields;
    }
    Dbptr field = table;
    for (field.field = 0; field.field < count; ++field.field) {
        // A field that several members have is named with its table; here the parts are wanted.
        fields.append({answer(field, dbFIELD_BASE_TABLE), answer(field, dbFIELD_NAME).section('.', -1),
                       answer(field, dbFIELD_DESCRIPTION)});
    }
    return fields;
}

const QList<ExpressionFunction> &expressionFunctions()
{
    static const QList<ExpressionFunction> functions = [] {
        QList<ExpressionFunction> all;
        DbFunction function{};
        for (int64_t i = 0; dbexpr_function(i, &function) == 0; ++i) {
            all.append({QString::fromUtf8(function.name), QString::fromUtf8(function.signature),
                        QString::fromUtf8(function.help)});
        }
        return all;
    }();
    return functions;
}

ExpressionFault expressionFault(const Dbptr &table, const Dbptr &other, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    DbExpressionError error{};
    if (dbexpr_check(table, other, bytes.constData(), &error) == 0 || error.reason == nullptr) {
        return {};
    }
    ExpressionFault fault;
    fault.reason = QString::fromUtf8(error.reason);
    free(error.reason);
    fault.start = charactersBefore(bytes, error.offset);
    fault.length = charactersBefore(bytes, error.offset + error.length) - fault.start;
    return fault;
}
