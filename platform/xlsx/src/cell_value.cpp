#include "cell_value.h"

#include <QDateTime>

#include <cctype>
#include <cmath>
#include <stdexcept>

namespace QXlsx {

namespace {

constexpr qint64 exactInteger = 1LL << 53;
constexpr double millisecondsPerDay = 86400000.0;

CellValue numberCell(double number)
{
    return {CellKind::Number, number, {}};
}

CellValue textCell(const QString &text)
{
    if (text.isEmpty()) {
        return {};
    }
    const QString escaped = escapedText(text);
    if (escaped.size() > longestCellText) {
        throw std::length_error("the text is longer than the " + std::to_string(longestCellText) +
                                " characters of a cell");
    }
    return {CellKind::Text, 0, escaped.toUtf8()};
}

CellValue dateCell(CellKind kind, const QDate &date, const QTime &time, const QString &iso)
{
    const std::optional<double> serial = dateSerial(date, time);
    return serial ? CellValue{kind, *serial, {}} : textCell(iso);
}

CellValue dateTimeCell(const QDateTime &value)
{
    if (!value.isValid()) {
        return {};
    }
    return dateCell(CellKind::DateTime, value.date(), value.time(), value.toString(Qt::ISODateWithMs));
}

CellValue floatingCell(double number)
{
    return std::isfinite(number) ? numberCell(number) : textCell(QString::number(number));
}

CellValue signedCell(qint64 number)
{
    const bool exact = number >= -exactInteger && number <= exactInteger;
    return exact ? numberCell(double(number)) : textCell(QString::number(number));
}

CellValue unsignedCell(quint64 number)
{
    return number <= quint64(exactInteger) ? numberCell(double(number)) : textCell(QString::number(number));
}

// A unit that takes part in no character: half a surrogate pair.
bool isLoneSurrogate(const QString &text, int at)
{
    const QChar unit = text[at];
    if (unit.isHighSurrogate()) {
        return at + 1 == text.size() || !text[at + 1].isLowSurrogate();
    }
    return unit.isLowSurrogate() && (at == 0 || !text[at - 1].isHighSurrogate());
}

bool xmlCannotCarry(const QString &text, int at)
{
    const ushort unit = text[at].unicode();
    if (unit < 0x20) {
        return unit != '\t' && unit != '\n'; // a carriage return would be read back as a line feed
    }
    return unit >= 0xfffe || isLoneSurrogate(text, at);
}

bool looksEscaped(const QString &text, int at)
{
    constexpr int length = 7; // _xHHHH_
    if (text[at] != '_' || text.size() - at < length || text[at + 1] != 'x' || text[at + length - 1] != '_') {
        return false;
    }
    for (int digit = at + 2; digit < at + length - 1; ++digit) {
        const char c = text[digit].toLatin1();
        if (!std::isxdigit(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<double> dateSerial(const QDate &date, const QTime &time)
{
    constexpr int lastDayBeforeTheFalseOne = 59; // 28 February 1900; the calendar's next day never was
    if (!date.isValid() || date < QDate(1900, 1, 1) || date > QDate(9999, 12, 31)) {
        return std::nullopt;
    }
    qint64 days = QDate(1899, 12, 31).daysTo(date);
    days += days > lastDayBeforeTheFalseOne ? 1 : 0;
    return double(days) + time.msecsSinceStartOfDay() / millisecondsPerDay;
}

QString escapedText(const QString &text)
{
    QString escaped;
    escaped.reserve(text.size());
    for (int at = 0; at < text.size(); ++at) {
        if (xmlCannotCarry(text, at)) {
            const QString code = QString::number(text[at].unicode(), 16).toUpper();
            escaped += QLatin1String("_x") + code.rightJustified(4, QLatin1Char('0')) + QLatin1Char('_');
        } else if (looksEscaped(text, at)) {
            escaped += QLatin1String("_x005F_");
        } else {
            escaped += text[at];
        }
    }
    return escaped;
}

CellValue cellValue(const QVariant &value)
{
    if (!value.isValid() || value.isNull()) {
        return {};
    }
    switch (value.userType()) {
    case QMetaType::Bool:
        return {CellKind::Boolean, value.toBool() ? 1.0 : 0.0, {}};
    case QMetaType::Double:
    case QMetaType::Float:
        return floatingCell(value.toDouble());
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return signedCell(value.toLongLong());
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return unsignedCell(value.toULongLong());
    case QMetaType::QDateTime:
        return dateTimeCell(value.toDateTime());
    case QMetaType::QDate:
        return dateCell(CellKind::Date, value.toDate(), QTime(0, 0), value.toDate().toString(Qt::ISODate));
    default:
        break;
    }
    if (!value.canConvert<QString>()) {
        throw std::invalid_argument(std::string("a value of type ") + value.typeName() + " has no text form");
    }
    return textCell(value.toString());
}

} // namespace QXlsx
