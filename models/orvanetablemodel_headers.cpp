// The headers of a table: names, widths and tooltips of its columns and rows.

#include <QSize>
#include <algorithm>

#include <orvane/db.h>

#include "answered.h"
#include "orvanetablemodel_p.h"
#include "qovutil.h"
#include <ovconfig.h>

namespace {

constexpr int recordNumberWidthChars = 6;

QSize sizeOf(const QString &text, const QFontMetrics &metrics)
{
    return {metrics.horizontalAdvance(text), metrics.height()};
}

// The name as a chooser shows it: with the table that it comes from where a view has several.
QString qualifiedName(QDbptr &field, const QString &name)
{
    if (field.tableIsView() && field.getViewTables().size() > 1)
        return field.getFieldBaseTable() + QStringLiteral(".\n") + field.getFieldName();
    return name;
}

} // namespace

int OrvaneTableModel::approxColumnWidthChars(int column) const
{
    if (column == 0)
        return recordNumberWidthChars;
    const TableColumn *field = d->column(column);
    if (!field)
        return 0;
    const int valueWidth = field->type == dbTIME ? d->settings().readableTimeLength()
                                                 : answered(0, [&] { return d->sample(column).widthChars; });
    return std::max(valueWidth, field->name.length() + 2);
}

QVariant OrvaneTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool wanted = role == Qt::DisplayRole || role == Qt::ToolTipRole || role == Qt::SizeHintRole ||
                        role == Qt::UserRole;
    if (!wanted || section < 0)
        return {};
    if (orientation == Qt::Vertical)
        return d->rowHeader(section, role, *this);
    if (section == 0)
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("recno")) : QVariant();
    return d->columnHeader(section, role, *this);
}

QVariant OrvaneTableModel::Private::rowHeader(int section, int role, const OrvaneTableModel &model)
{
    switch (role) {
    case Qt::DisplayRole:
        return section;
    case Qt::SizeHintRole:
        return sizeOf(QString::number(model.rowCount()) + QStringLiteral("XXX"), settings().fontMetrics());
    case Qt::ToolTipRole: {
        QDbptr *record = settings().showTooltips ? handleFor(0, section) : nullptr;
        return record
                   ? answered(QVariant(), [&] { return QVariant(qovutil_getToolTipString(record, &config)); })
                   : QVariant();
    }
    default:
        return {};
    }
}

QVariant OrvaneTableModel::Private::columnHeader(int section, int role, const OrvaneTableModel &model)
{
    const TableColumn *field = column(section);
    if (!field)
        return {};
    return answered(QVariant(), [&]() -> QVariant {
        switch (role) {
        case Qt::DisplayRole:
            return field->name;
        case Qt::SizeHintRole:
            return sizeOf(QString(model.approxColumnWidthChars(section) + 3, QLatin1Char('X')),
                          settings().fontMetrics());
        case Qt::ToolTipRole:
            return settings().showTooltips
                       ? QVariant(qovutil_getToolTipString(handleFor(section, dbALL), nullptr))
                       : QVariant();
        default:
            return qualifiedName(*handleFor(section, dbALL), field->name);
        }
    });
}
