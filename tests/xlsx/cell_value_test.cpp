#include "cell_value.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace QXlsx;

namespace {

TEST(CellValue, counts_days_as_spreadsheets_do)
{
    EXPECT_EQ(dateSerial(QDate(1900, 1, 1), QTime(0, 0)), 1.0);
    EXPECT_EQ(dateSerial(QDate(1900, 2, 28), QTime(0, 0)), 59.0);
    EXPECT_EQ(dateSerial(QDate(1900, 3, 1), QTime(0, 0)), 61.0);
    EXPECT_EQ(dateSerial(QDate(1970, 1, 1), QTime(12, 0)), 25569.5);
    EXPECT_EQ(dateSerial(QDate(9999, 12, 31), QTime(0, 0)), 2958465.0);
    EXPECT_FALSE(dateSerial(QDate(1899, 12, 31), QTime(23, 59)));
    EXPECT_FALSE(dateSerial(QDate(10000, 1, 1), QTime(0, 0)));
    EXPECT_FALSE(dateSerial(QDate(), QTime(0, 0)));
}

TEST(CellValue, keeps_integers_as_numbers_up_to_where_they_stay_exact)
{
    constexpr qint64 last = 1LL << 53;
    EXPECT_EQ(cellValue(last).kind, CellKind::Number);
    EXPECT_EQ(cellValue(-last).number, -double(last));
    EXPECT_EQ(cellValue(last + 1).text, "9007199254740993");
    EXPECT_EQ(cellValue(-last - 1).text, "-9007199254740993");
    EXPECT_EQ(cellValue(std::numeric_limits<quint64>::max()).text, "18446744073709551615");
}

TEST(CellValue, writes_what_is_no_number_as_text)
{
    EXPECT_EQ(cellValue(std::numeric_limits<double>::infinity()).text, "inf");
    EXPECT_EQ(cellValue(-std::numeric_limits<double>::infinity()).text, "-inf");
    EXPECT_EQ(cellValue(std::numeric_limits<double>::quiet_NaN()).text, "nan");
}

TEST(CellValue, is_blank_where_there_is_nothing_to_show)
{
    EXPECT_EQ(cellValue(QVariant()).kind, CellKind::Blank);
    EXPECT_EQ(cellValue(QVariant(QVariant::Int)).kind, CellKind::Blank);
    EXPECT_EQ(cellValue(QString("")).kind, CellKind::Blank);
    EXPECT_EQ(cellValue(QDateTime()).kind, CellKind::Blank);
}

TEST(CellValue, escapes_what_the_file_form_cannot_carry)
{
    EXPECT_EQ(escapedText(QStringLiteral("plain\ttext\n")), QStringLiteral("plain\ttext\n"));
    EXPECT_EQ(escapedText(QString(QChar(0))), QStringLiteral("_x0000_"));
    EXPECT_EQ(escapedText(QStringLiteral("a\r")), QStringLiteral("a_x000D_"));
    EXPECT_EQ(escapedText(QString(QChar(0xd800))), QStringLiteral("_xD800_"));
    EXPECT_EQ(escapedText(QString(QChar(0xffff))), QStringLiteral("_xFFFF_"));
    EXPECT_EQ(escapedText(QStringLiteral("a_x0041_b")), QStringLiteral("a_x005F_x0041_b"));
    EXPECT_EQ(escapedText(QStringLiteral("_x004_ _x")), QStringLiteral("_x004_ _x"));
    EXPECT_EQ(escapedText(QString::fromUtf8("\U0001F30B")), QString::fromUtf8("\U0001F30B"));
}

} // namespace
