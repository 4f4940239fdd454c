// What the cells of a table show, and the handles of indexes.

#include <QDateTime>
#include <cmath>

#include <orvane/db.h>
#include <orvane/util.h>

#include "answered.h"
#include "orvanetablemodel_p.h"

namespace {

int alignmentOf(int fieldType)
{
    switch (fieldType) {
    case dbTIME:
    case dbSTRING:
    case dbDBPTR:
        return Qt::AlignLeft;
    case dbBOOLEAN:
    case dbINTEGER:
    case dbREAL:
    case dbYEARDAY:
        return Qt::AlignRight;
    default:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    }
}

QVariant displayed(const CellText &cell, int fieldType, const DisplaySettings &settings)
{
    if (cell.null && !settings.showRawNulls)
        return {};
    if (fieldType == dbTIME && settings.showReadableTimes)
        return settings.readableTime(cell.text.toDouble());
    return cell.text;
}

bool isBlank(const QString &trimmed)
{
    return whitespace(trimmed.toUtf8().constData()) != 0;
}

const QVariant &background(const CellText &cell, const DisplaySettings &settings)
{
    if (cell.null)
        return settings.nullBackground;
    return settings.colourBlanks && isBlank(cell.text) ? settings.blankBackground : settings.plainBackground;
}

// Within what a clock in milliseconds can count, shifted by any zone; seconds.
constexpr double furthestTime = 9.2e15;

// A time beyond any clock, and one that is no number, stays the number it is.
QVariant typedValue(const QVariant &value, int fieldType, const DisplaySettings &settings)
{
    if (fieldType != dbTIME || !settings.showReadableTimes)
        return value;
    const double epoch = value.toDouble();
    if (!(std::abs(epoch) <= furthestTime))
        return value;
    QDateTime time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(1000 * epoch), Qt::UTC);
    // Shifted, and still said to be UTC: what is meant here is the clock on the wall.
    if (settings.showLocalTimes && settings.localOffsets.isValid())
        time = time.addSecs(settings.localOffsets.offsetFromUtc(time));
    return time;
}

} // namespace

QVariant OrvaneTableModel::data(const QModelIndex &index, int role) const
{
    // An index of the scratch or the null record is not valid by the toolkit's rules, and has a place.
    const bool isSpecial = index.model() == this && (index.row() == dbSCRATCH || index.row() == dbNULL);
    if (!index.isValid() && !isSpecial)
        return {};
    if (index.column() == 0)
        return index.row(); // in every role: the column is never drawn by its other roles
    switch (role) {
    case Qt::DisplayRole:
    case Qt::TextAlignmentRole:
    case Qt::BackgroundRole:
    case Qt::UserRole:
        break;
    default:
        return {};
    }
    const TableColumn *column = d->column(index.column());
    if (!column)
        return {};
    if (role == Qt::TextAlignmentRole)
        return alignmentOf(column->type);

    const DisplaySettings &settings = d->settings();
    CellReader &reader = d->reader;
    return answered(QVariant(), [&]() -> QVariant {
        switch (role) {
        case Qt::DisplayRole:
            return displayed(reader.text(*column, index.row(), CellReader::Display), column->type, settings);
        case Qt::BackgroundRole:
            if (!settings.colourNulls && !settings.colourBlanks)
                return settings.plainBackground;
            return background(reader.text(*column, index.row(), CellReader::Background), settings);
        default:
            if (!settings.showRawNulls && reader.text(*column, index.row(), CellReader::Value).null)
                return {};
            return typedValue(reader.value(*column, index.row()), column->type, settings);
        }
    });
}

std::optional<Dbptr> OrvaneTableModel::Private::place(int number, qint64 record)
{
    if (!display->isValid() || (record < 0 && record != dbALL && record != dbSCRATCH && record != dbNULL))
        return std::nullopt;
    Dbptr result = display->getDbptr();
    if (number != 0) {
        const TableColumn *field = column(number);
        if (!field)
            return std::nullopt;
        result = field->field;
    }
    // Made directly: a lookup takes no negative numbers, which the scratch and the null record have.
    result.record = record;
    return result;
}

QDbptr *OrvaneTableModel::Private::handleFor(int number, qint64 record)
{
    const std::optional<Dbptr> wanted = place(number, record);
    if (!wanted)
        return nullptr;
    return answered<QDbptr *>(nullptr, [&] { return handles.at(display->getConnection(), *wanted); });
}

QModelIndex OrvaneTableModel::indexForRow(int row) const
{
    return createIndex(row, 0, d->handleFor(0, row));
}

QModelIndex OrvaneTableModel::indexForColumn(const QString &fieldName) const
{
    const int column = d->columns().names().indexOf(fieldName) + 1;
    return createIndex(0, column, column > 0 ? d->handleFor(column, dbALL) : nullptr);
}

QModelIndex OrvaneTableModel::indexForCell(int row, const QString &fieldName) const
{
    const int column = d->columns().names().indexOf(fieldName) + 1;
    return createIndex(row, column, column > 0 ? d->handleFor(column, row) : nullptr);
}

QModelIndex OrvaneTableModel::addQdbptrToIndex(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    if (index.column() == 0)
        return createIndex(index.row(), 0, nullptr);
    // The index's own pointer may be of the whole column. One from long ago may have been deleted; it is not
    // touched, and a pointer to its cell is found for it.
    auto *own = static_cast<QDbptr *>(index.internalPointer());
    const std::optional<Dbptr> column = d->place(index.column(), dbALL);
    const bool isOfColumn = own && column && d->handles.isAt(own, *column);
    return createIndex(index.row(), index.column(),
                       isOfColumn ? own : d->handleFor(index.column(), index.row()));
}
