// What a cell holds, in the few kinds that a spreadsheet knows.
#ifndef ORVANE_XLSX_CELL_VALUE_H
#define ORVANE_XLSX_CELL_VALUE_H

#include <QByteArray>
#include <QVariant>

#include <cstdint>
#include <optional>

namespace QXlsx {

enum class CellKind : std::uint8_t { Blank, Number, Boolean, Text, DateTime, Date };

struct CellValue {
    CellKind kind = CellKind::Blank;
    double number = 0; // of all kinds but Blank and Text; a date's is its serial
    QByteArray text;   // UTF-8, of kind Text: escaped as the file format wants it
};

constexpr int longestCellText = 32767;

// The cell that shows the value. Throws std::length_error for a text too long for a cell and
// std::invalid_argument for a value that has no text form.
CellValue cellValue(const QVariant &value);

// The serial number of a date and time in the calendar that counts from 1900 and takes 1900 for a leap year;
// nothing for dates that it doesn't reach.
std::optional<double> dateSerial(const QDate &date, const QTime &time);

// The text with what XML cannot carry as _xHHHH_, and with what would be read as such an escape itself
// escaped.
QString escapedText(const QString &text);

} // namespace QXlsx

#endif
