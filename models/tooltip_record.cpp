#include "tooltip_rows.h"

#include <cstdlib>
#include <memory>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <orvane/util.h>
#include <ovconfig.h>
#include <qdbptr.h>

namespace tooltip {

namespace {

constexpr int rowsPerColumn = 30;
constexpr int longestText = 34; // characters of a string value
const QString ellipsis = QStringLiteral("...");

bool isSwitchedOn(const OvConfig *config, const char *key)
{
    return config && (*config)[QLatin1String(key)].toBool();
}

QString timeText(const QString &value, const OvConfig *config)
{
    if (!isSwitchedOn(config, "show_readable_times") || !config->hasKey(QStringLiteral("time_string_format")))
        return value;
    const QByteArray format = (*config)[QStringLiteral("time_string_format")].toString().toUtf8();
    const bool local = isSwitchedOn(config, "show_times_in_local_zone");
    const QByteArray zone = (*config)[QStringLiteral("local_time_zone")].toString().toUtf8();
    const std::unique_ptr<char, decltype(&std::free)> text(
        zepoch2str(value.toDouble(), format.constData(), local ? zone.constData() : nullptr), &std::free);
    return QString::fromUtf8(text.get());
}

QString shownValue(const QString &value, int type, const OvConfig *config)
{
    if (type == dbTIME)
        return timeText(value, config);
    if (type == dbSTRING && value.length() > longestText)
        return value.left(longestText - ellipsis.length()) + ellipsis;
    return value;
}

// One label and value of the grid, as two cells of an HTML table.
QString qovutil_field2pair(QDbptr *record, QString fieldName, const OvConfig *config)
{
    QString pair = "<td><b>" + fieldName + ":</b></td><td style='white-space: nowrap'>";
    const std::unique_ptr<QDbptr> field(record->lookupField(fieldName));
    const QString value = field->dbGet(false).trimmed();
    if (value != field->getFieldNull() || isSwitchedOn(config, "show_raw_nulls"))
        pair += shownValue(value, field->getFieldType(), config);
    return pair + "</td>";
}

// All fields, running down the columns. A full last column is followed by an empty one: meant.
QString fieldGrid(QDbptr &dbptr, const OvConfig *config)
{
    const QStringList names = dbptr.getTableFields();
    const int count = names.size();
    const int rows = qMin(count, rowsPerColumn);
    const int columns = rows > 0 ? count / rows + 1 : 0;
    QString grid = QStringLiteral("<table>\n");
    for (int row = 0; row < rows; ++row) {
        grid += "<tr>";
        for (int column = 0; column < columns; ++column) {
            const int field = rows * column + row;
            grid += field < count ? qovutil_field2pair(&dbptr, names[field], config)
                                  : QStringLiteral("<td></td>");
        }
        grid += "</tr>\n";
    }
    return grid + "</table>\n";
}

} // namespace

QString ofRecord(QDbptr &dbptr, const OvConfig *config)
{
    QString text =
        "<table>\n" + plainRow(OvTranslation::noop("Record index"), QString::number(dbptr.getIndexRecord()));
    if (!dbptr.tableIsView()) {
        text += "<tr><td><b>" + label(OvTranslation::noop("Record size")) + "</b></td><td>" +
                QString::number(number(dbptr, "record_size")) + " bytes</td></tr>\n";
    }
    return text + "</table>\n<hr/>\n" + fieldGrid(dbptr, config);
}

} // namespace tooltip
