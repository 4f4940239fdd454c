#include <cstring>
#include <vector>

#include "cell_text.h"
#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"
#include "request_vocabulary.h"

namespace {

// A library value that owns its text.
class FieldValue
{
public:
    FieldValue() = default;
    ~FieldValue() { std::free(m_value.text); }
    FieldValue(const FieldValue &) = delete;
    FieldValue &operator=(const FieldValue &) = delete;

    bool read(Dbptr cell) { return dbgetv(cell, nullptr, &m_value) >= 0; }
    const DbValue &operator*() const { return m_value; }

private:
    DbValue m_value{};
};

// The records of a bundle as "first-end"; null when they can't be had.
QString bundleRange(const DbValue &value)
{
    int64_t first = 0;
    int64_t end = 0;
    if (value.type == dbDBPTR && value.dbptr.database == dbINVALID)
        return QStringLiteral(""); // the null bundle: it was read, and names no records
    if (value.type != dbDBPTR || dbget_range(value.dbptr, &first, &end) < 0)
        return {};
    return QString::asprintf("%ld-%ld", static_cast<long>(first), static_cast<long>(end));
}

QVariant integerOf(const DbValue &value)
{
    return static_cast<qlonglong>(value.integer);
}

QVariant realOf(const DbValue &value)
{
    return value.real;
}

QVariant textOf(const DbValue &value)
{
    return shownText(value.text);
}

QVariant rangeOf(const DbValue &value)
{
    return bundleRange(value);
}

struct ValueKind {
    int64_t fieldType;
    QVariant (*convert)(const DbValue &);
};

const ValueKind valueKinds[] = {
    {dbBOOLEAN, integerOf}, {dbINTEGER, integerOf}, {dbYEARDAY, integerOf}, {dbREAL, realOf},
    {dbTIME, realOf},       {dbSTRING, textOf},     {dbDBPTR, rangeOf},
};

const ValueKind *valueKindOf(int64_t fieldType)
{
    for (const ValueKind &kind : valueKinds)
        if (kind.fieldType == fieldType)
            return &kind;
    return nullptr;
}

bool pointsToBundle(Dbptr db)
{
    if (db.field < 0)
        return false;
    const char *name = queriedText(db, dbFIELD_NAME);
    return name && std::strcmp(name, "bundle") == 0;
}

void answerBundle(const RequestCall &call)
{
    FieldValue value;
    const QString range = value.read(call.input) ? bundleRange(*value) : QString();
    if (range.isNull())
        call.fail(QStringLiteral("dbget error -- failed to retrieve 'bundle' value"), LibraryLog::With);
    else
        call.response->setValue(range);
}

void answerText(const RequestCall &call)
{
    const bool read = withText(call.input, [&](const char *text, int64_t length) {
        call.response->setValue(QString::fromUtf8(text, static_cast<int>(length)));
    });
    if (!read)
        call.fail(QStringLiteral("dbget error"), LibraryLog::With);
}

void copyToScratch(const RequestCall &call)
{
    if (dbget(call.input, nullptr, 0) < 0)
        call.fail(QStringLiteral("dbget error"), LibraryLog::With);
}

// False, with the error made, when the field can't be read or its type is not one of ours.
bool addValue(const RequestCall &call, const QString &field, QHash<QString, QVariant> &values)
{
    const Dbptr cell = dblookup(call.input, "", "", field.toUtf8().constData(), "");
    const int64_t type = queriedNumber(cell, dbFIELD_TYPE);
    FieldValue value;
    if (!value.read(cell)) {
        call.fail(QStringLiteral("Failed to retrieve value for field '%1'").arg(field), LibraryLog::Without);
        return false;
    }
    const ValueKind *kind = valueKindOf(type);
    if (!kind) {
        call.fail(QStringLiteral("Unknown field type -- field '%1' reports type '%2'")
                      .arg(field, QString::number(type)),
                  LibraryLog::With);
        return false;
    }
    values.insert(field, kind->convert(*value));
    return true;
}

} // namespace

namespace requests {

void getText(const RequestCall &call)
{
    if (call.arguments.first().toBool())
        copyToScratch(call);
    else if (pointsToBundle(call.input))
        answerBundle(call);
    else
        answerText(call);
}

void getValues(const RequestCall &call)
{
    const QVariant &fields = call.arguments.first();
    if (!fields.canConvert<QVariantList>()) {
        call.fail(QStringLiteral("First argument must be a fields list"), LibraryLog::Without);
        return;
    }
    QHash<QString, QVariant> values;
    const QVariantList names = fields.toList();
    for (const QVariant &name : names)
        if (!addValue(call, name.toString(), values))
            return;
    call.response->setValue(values);
}

// A negative number, for nothing found as for a failure, is an answer and no error.
void findRecord(const RequestCall &call)
{
    const QByteArray expression = call.arguments[0].toString().toUtf8();
    const int backwards = call.arguments[1].toBool() ? 1 : 0;
    call.response->setValue<long>(dbfind(call.input, expression.constData(), backwards, nullptr));
}

namespace {

std::vector<int64_t> numbersOf(const QVariant &list)
{
    const QVariantList numbers = list.toList();
    std::vector<int64_t> result;
    result.reserve(static_cast<std::size_t>(numbers.size()));
    for (const QVariant &number : numbers)
        result.push_back(number.toLongLong());
    return result;
}

QVariantList listOf(const std::vector<int64_t> &numbers)
{
    QVariantList list;
    list.reserve(static_cast<int>(numbers.size()));
    for (const int64_t number : numbers)
        list.append(static_cast<qlonglong>(number));
    return list;
}

} // namespace

// That nobody knows where records are is an answer, too: an empty list.
void movedRecords(const RequestCall &call)
{
    std::vector<int64_t> records = numbersOf(call.arguments[1]);
    const int answer = dbmoved_records(call.input, call.arguments[0].toLongLong(), records.data(),
                                       records.size(), records.data());
    if (answer == dbERROR_STALE)
        call.response->setValue(QVariantList());
    else if (answer < 0)
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    else
        call.response->setValue(listOf(records));
}

void findRows(const RequestCall &call)
{
    const QByteArray name = call.arguments[0].toString().toUtf8();
    const Dbptr other = dblookup(call.input, "", name.constData(), "dbALL", "dbALL");
    std::vector<int64_t> rows = numbersOf(call.arguments[1]);
    if (other.table < 0 || dbfind_rows(call.input, other, rows.data(), rows.size(), rows.data()) < 0) {
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
        return;
    }
    call.response->setValue(listOf(rows));
}

} // namespace requests
