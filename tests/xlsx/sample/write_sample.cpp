// Writes a sheet of all kinds of cells to the path given, column by column, for read_sample.py to read, and
// prints a number as the locale wants it.
#include <xlsxdocument.h>

#include <QDateTime>

#include <clocale>
#include <cstdio>
#include <limits>

namespace {

const QVariantList kinds = {
    42,
    -12.5,
    9007199254740993LL, // one more than a spreadsheet's numbers can tell
    true,
    false,
    QStringLiteral("plain text"),
    QStringLiteral("=1+1"),
    QStringLiteral("007"),
    QStringLiteral("http://example.com/"),
    QString::fromUtf8("Zürich 東京 <&> \"q\""),
    QStringLiteral("  two blanks "),
    QStringLiteral("line\nline\ttab"),
    QVariant(),
    QString(),
    std::numeric_limits<double>::quiet_NaN(),
};

const QList<QDateTime> dates = {
    QDateTime(QDate(2018, 2, 7), QTime(3, 4, 5, 250), Qt::UTC),
    QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 500), Qt::UTC),
    QDateTime(QDate(1900, 3, 1), QTime(0, 0), Qt::UTC),
    QDateTime(QDate(1897, 6, 12), QTime(11, 6), Qt::UTC), // before a spreadsheet's calendar
};

bool writeSample(QXlsx::Document &sheet)
{
    QXlsx::Format bold;
    bold.setFontBold(true);
    QXlsx::Format time;
    time.setNumberFormat(QStringLiteral("m/d/yy h:mm:ss.00"));
    bool good = sheet.setColumnWidth(1, 30) && sheet.setColumnWidth(2, 17.5);
    good = good && sheet.write(1, 1, QStringLiteral("kinds"), bold) &&
           sheet.write(1, 2, QStringLiteral("time"), bold);
    for (int at = 0; at < kinds.size(); ++at) {
        good = good && sheet.write(at + 2, 1, kinds[at]);
    }
    for (int at = 0; at < dates.size(); ++at) {
        good = good && sheet.write(at + 2, 2, dates[at], time);
    }
    return good && sheet.write(2, 3, dates[0]) && sheet.write(3, 3, QDate(2020, 2, 29)) &&
           sheet.write(4, 3, 7) && sheet.write(4, 3, 8, bold) &&
           sheet.write(1048576, 16384, QStringLiteral("last"));
}

} // namespace

int main(int count, char **arguments)
{
    std::setlocale(LC_ALL, ""); // as the toolkit's applications do
    std::printf("%.1f\n", 1.5);
    QXlsx::Document sheet;
    if (count != 2 || !writeSample(sheet) || !sheet.saveAs(QString::fromLocal8Bit(arguments[1]))) {
        std::fprintf(stderr, "the sample was not written\n");
        return 1;
    }
    return 0;
}
