// The requests that change records.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"
#include "request_vocabulary.h"

namespace {

// What an entry of "dbputv" is stored as. The text of a string is borrowed from `bytes`.
struct WrittenValue {
    DbValue value{};
    QByteArray bytes;

    void setText(const QByteArray &text)
    {
        bytes = text;
        value.text = bytes.data();
    }
};

// Why a text can't be stored as a type of field: with %1 the field and %2 the text.
struct Refusal {
    const char *message;
    LibraryLog log;
};

using Convert = std::optional<Refusal> (*)(const QString &text, WrittenValue &written);
using ConvertNull = void (*)(const char *text, WrittenValue &written);

std::optional<Refusal> integerFrom(const QString &text, WrittenValue &written)
{
    bool isInteger = false;
    written.value.integer = text.toLongLong(&isInteger);
    if (isInteger)
        return std::nullopt;
    return Refusal{"Field '%1' value '%2' doesn't convert to an integer", LibraryLog::Without};
}

std::optional<Refusal> realFrom(const QString &text, WrittenValue &written)
{
    bool isReal = false;
    written.value.real = text.toDouble(&isReal);
    if (isReal)
        return std::nullopt;
    return Refusal{"Field '%1' value '%2' doesn't convert to a double-precision number", LibraryLog::Without};
}

std::optional<Refusal> timeFrom(const QString &text, WrittenValue &written)
{
    if (is_epoch_string(text.toUtf8().constData(), &written.value.real))
        return std::nullopt;
    return Refusal{"Field '%1' value '%2' doesn't appear to be an epoch string", LibraryLog::With};
}

std::optional<Refusal> textFrom(const QString &text, WrittenValue &written)
{
    written.setText(text.toUtf8());
    return std::nullopt;
}

void integerFromNull(const char *text, WrittenValue &written)
{
    written.value.integer = std::atol(text);
}

void realFromNull(const char *text, WrittenValue &written)
{
    written.value.real = std::atof(text);
}

void textFromNull(const char *text, WrittenValue &written)
{
    written.setText(text);
}

struct WrittenKind {
    int64_t fieldType;
    Convert convert;
    ConvertNull convertNull;
};

const WrittenKind writtenKinds[] = {
    {dbBOOLEAN, integerFrom, integerFromNull}, {dbINTEGER, integerFrom, integerFromNull},
    {dbYEARDAY, integerFrom, integerFromNull}, {dbREAL, realFrom, realFromNull},
    {dbTIME, timeFrom, realFromNull},          {dbSTRING, textFrom, textFromNull},
    {dbDBPTR, textFrom, textFromNull},
};

const WrittenKind *writtenKindOf(int64_t fieldType)
{
    for (const WrittenKind &kind : writtenKinds)
        if (kind.fieldType == fieldType)
            return &kind;
    return nullptr;
}

// False, with the error made, when the value can't be one of the field's type. The type and the null value
// are those of the field that the call points to, whatever field is named; that is meant.
bool convertValue(const RequestCall &call, const QString &field, const QString &text, WrittenValue &written)
{
    const int64_t type = queriedNumber(call.input, dbFIELD_TYPE);
    const WrittenKind *kind = writtenKindOf(type);
    if (!kind) {
        call.fail(QStringLiteral("Unknown field type -- field '%1' reports type '%2'")
                      .arg(field, QString::number(type)),
                  LibraryLog::With);
        return false;
    }
    written.value.type = type;
    if (text == QLatin1String("NULL")) {
        const char *null = queriedText(call.input, dbNULL);
        kind->convertNull(null ? null : "", written);
        return true;
    }
    const std::optional<Refusal> refusal = kind->convert(text, written);
    if (!refusal)
        return true;
    call.fail(QString::fromLatin1(refusal->message).arg(field, text), refusal->log);
    return false;
}

// A text with a zero byte in it would reach the library cut short. False, with the error made, when it has
// one.
bool isWhole(const RequestCall &call, const QString &text)
{
    if (!text.contains(QChar(0)))
        return true;
    elog_log("a text with a zero byte in it can't be stored; take the byte out");
    call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    return false;
}

using AddRecord = int64_t (*)(Dbptr, const char *);

// An empty text stands for the scratch record.
void add(const RequestCall &call, AddRecord addRecord)
{
    const QString text = call.arguments.first().toString();
    if (!isWhole(call, text))
        return;
    const QByteArray row = text.toUtf8();
    const int64_t number = addRecord(call.input, row.isEmpty() ? nullptr : row.constData());
    if (number < 0)
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    else
        call.response->setValue<long>(number);
}

void change(const RequestCall &call, int (*action)(Dbptr))
{
    if (action(call.input) < 0)
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
}

// Ranges of rows, given as the first and the last of each in turn.
std::vector<DbRows> rowsOf(const QVariant &argument)
{
    const QVariantList numbers = argument.toList();
    std::vector<DbRows> rows;
    rows.reserve(static_cast<std::size_t>(numbers.size()) / 2);
    for (int i = 0; i + 1 < numbers.size(); i += 2)
        rows.push_back({numbers[i].toLongLong(), numbers[i + 1].toLongLong() + 1});
    return rows;
}

// Answers what became of a change of many rows: [rows changed, why not all, whether it was cancelled]. Only
// one of which nothing was done is an error.
void answerChanged(const RequestCall &call, int code, int64_t changed)
{
    if (code < 0 && code != dbERROR_CANCELLED && changed == 0) {
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
        return;
    }
    QString reason;
    if (code < 0) {
        const std::unique_ptr<char, decltype(&std::free)> log(elog_string(0), &std::free);
        reason = shownText(log.get()).trimmed();
        elog_clear();
    }
    call.response->setValue(QVariantList{static_cast<qlonglong>(changed), reason, code == dbERROR_CANCELLED});
}

} // namespace

namespace requests {

// A value that can't be converted ends the request, one that the library refuses does not: what is written
// stays written.
void putValues(const RequestCall &call)
{
    const QVariant &argument = call.arguments.first();
    if (!argument.canConvert<QVariantMap>()) {
        call.fail(QStringLiteral("First argument must be a fields->values map"), LibraryLog::Without);
        return;
    }
    const QVariantMap values = argument.toMap();
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        WrittenValue written;
        if (!convertValue(call, entry.key(), entry.value().toString(), written))
            return;
        if (!isWhole(call, entry.key()) || !isWhole(call, entry.value().toString()))
            continue;
        if (dbputv(call.input, entry.key().toUtf8().constData(), &written.value) < 0)
            call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    }
}

void putRows(const RequestCall &call)
{
    const QString field = call.arguments[0].toString();
    const QString text = call.arguments[1].toString();
    WrittenValue written;
    if (!convertValue(call, field, text, written) || !isWhole(call, field) || !isWhole(call, text))
        return;
    const std::vector<DbRows> rows = rowsOf(call.arguments[2]);
    int64_t changed = 0;
    const int code = dbputv_rows(call.input, field.toUtf8().constData(), &written.value, rows.data(),
                                 rows.size(), &changed);
    answerChanged(call, code, changed);
}

void markRows(const RequestCall &call)
{
    const std::vector<DbRows> rows = rowsOf(call.arguments[0]);
    int64_t changed = 0;
    const int code = dbmark_rows(call.input, rows.data(), rows.size(), &changed);
    answerChanged(call, code, changed);
}

void addRecord(const RequestCall &call)
{
    add(call, dbadd);
}

void addCheckedRecord(const RequestCall &call)
{
    add(call, dbaddchk);
}

void markRecord(const RequestCall &call)
{
    change(call, dbmark);
}

void crunchTable(const RequestCall &call)
{
    change(call, dbcrunch);
}

void freeView(const RequestCall &call)
{
    change(call, dbfree);
}

} // namespace requests
