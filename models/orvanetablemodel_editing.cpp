// Changing the records of a table.

#include <algorithm>
#include <stdexcept>

#include <QScopeGuard>

#include <orvane/db.h>
#include <orvane/tr.h>

#include "answered.h"
#include "library_reason.h"
#include "orvanetablemodel_p.h"

namespace {

// What the user is told of a failed change: the library's reason, or where it has none, the request's
// message.
QString reasonOf(const QString &errorText)
{
    const QString reason = libraryReason(errorText).trimmed();
    if (!reason.isEmpty())
        return reason;
    const QString message = errorText.section(QStringLiteral(":\n\n"), 1);
    return message.section(QStringLiteral("\n\n"), 0, 0);
}

QVector<QDbptr::RowRange> rangesOf(const OrvaneTableModel::RowRanges &rows)
{
    QVector<QDbptr::RowRange> ranges;
    ranges.reserve(rows.size());
    for (const auto &[first, last] : rows)
        ranges.append({first, last});
    return ranges;
}

// Single rows, put together to ranges.
QVector<QDbptr::RowRange> rangesOf(QVector<qint64> rows)
{
    std::sort(rows.begin(), rows.end());
    QVector<QDbptr::RowRange> ranges;
    for (const qint64 row : qAsConst(rows)) {
        if (row < 0)
            continue;
        if (!ranges.isEmpty() && row <= ranges.last().last + 1)
            ranges.last().last = row;
        else
            ranges.append({row, row});
    }
    return ranges;
}

QVector<qint64> singleRows(const OrvaneTableModel::RowRanges &rows)
{
    QVector<qint64> single;
    for (const auto &[first, last] : rows)
        for (int row = first; row <= last; ++row)
            single.append(row);
    return single;
}

// Those of a key, both ends of a range.
QStringList keyFields(const QStringList &key)
{
    QStringList fields;
    for (const QString &part : key)
        fields += part.split(QStringLiteral("::"));
    return fields;
}

template <typename Change>
OrvaneTableModel::RowsStored stored(Change change)
{
    try {
        const QDbptr::RowsChanged done = change();
        return {done.changed, done.failure, done.cancelled};
    } catch (const std::exception &error) {
        return {0, reasonOf(QString::fromUtf8(error.what()))};
    }
}

} // namespace

OrvaneTableModel::RowsStored OrvaneTableModel::setRowsData(const RowRanges &rows, int column,
                                                           const QVariant &value)
{
    const std::optional<Dbptr> place = column > 0 ? d->place(column, dbALL) : std::nullopt;
    if (!place || rows.isEmpty())
        return {};
    QDbptr field(d->display->getConnection(), *place);
    const QString name = d->column(column)->name;
    const RowsStored done = stored([&] { return field.putRows(name, value, rangesOf(rows)); });
    int first = rows.first().first;
    int last = rows.first().second;
    for (const auto &range : rows) {
        first = std::min(first, range.first);
        last = std::max(last, range.second);
    }
    // A change stamps records with its time, so other columns change, too.
    if (done.stored > 0) {
        emit dataChanged(index(first, 0), index(last, columnCount() - 1));
        letOthersShowChange();
    }
    return done;
}

QStringList OrvaneTableModel::baseKey(int column) const
{
    return answered<QStringList>({}, [&]() -> QStringList {
        const std::optional<Dbptr> place = column > 0 ? d->place(column, dbALL) : std::nullopt;
        if (!place)
            return {};
        QDbptr field(d->display->getConnection(), *place);
        const std::unique_ptr<QDbptr> table(d->own->lookupTable(field.getFieldBaseTable()));
        const QStringList key = table->getPrimaryKey();
        return keyFields(key).contains(field.getFieldName()) ? key : QStringList();
    });
}

qint64 OrvaneTableModel::differentBaseKeys(int column, Keys keys) const
{
    const std::optional<Dbptr> place = column > 0 ? d->place(column, dbALL) : std::nullopt;
    if (!place)
        return 0;
    QDbptr field(d->display->getConnection(), *place);
    const std::unique_ptr<QDbptr> table(d->own->lookupTable(field.getFieldBaseTable()));
    QStringList fields = keyFields(table->getPrimaryKey());
    if (keys == Keys::WithOneValue)
        fields.removeAll(field.getFieldName());
    const qint64 records = table->getRecordCount();
    if (fields.isEmpty())
        return std::min<qint64>(records, 1);
    const LoggedSince logged;
    const std::unique_ptr<QDbptr> sorted(table->sort(fields, {}, false, true));
    if (!sorted->isValid())
        throw std::runtime_error(logged.take().toStdString());
    const auto drop = qScopeGuard([&] { sorted->dbFree(); });
    return sorted->getRecordCount();
}

OrvaneTableModel::RowsStored OrvaneTableModel::markRows(const RowRanges &rows)
{
    if (rows.isEmpty() || !d->own->isValid())
        return {};
    const auto reset = qScopeGuard([this] {
        emit modelReset();
        letOthersShowChange();
    });
    QDbptr table(d->own->getConnection(), d->own->getDbptr());
    return stored([&] {
        if (d->display == d->own)
            return table.markRows(rangesOf(rows));
        if (tableIsView()) { // what is shown in its place loses the rows, too
            QDbptr sorted(d->display->getConnection(), d->display->getDbptr());
            sorted.markRows(rangesOf(rows));
        }
        return table.markRows(rangesOf(Private::sameRows(d->display, d->own, singleRows(rows))));
    });
}

bool OrvaneTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (index.column() <= 0)
        return false;
    if (role != Qt::EditRole)
        return true;
    d->editError.clear();
    const std::optional<Dbptr> place = d->place(index.column(), index.row());
    if (!place) {
        d->editError = OvTranslation::tr("the table is not there any more");
        return false;
    }
    if (index.row() >= 0 && !isCurrent()) {
        // The row may have another record by now than the one that the user looks at.
        d->editError = OvTranslation::tr("another program replaced the table since it was shown, and it is "
                                         "read anew. Look whether this is "
                                         "still the record that you mean, and store the value again");
        queueRefresh({});
        return false;
    }
    try {
        // A handle of its own: those of indexes may have listeners who reset the model.
        QDbptr cell(d->display->getConnection(), *place);
        cell.dbPutv(d->column(index.column())->name, value);
    } catch (const std::exception &error) {
        d->editError = reasonOf(QString::fromUtf8(error.what()));
        if (index.row() >= 0 && !isCurrent())
            queueRefresh({});
        return false;
    }
    emit dataChanged(index, index);
    letOthersShowChange();
    return true;
}

QString OrvaneTableModel::refusal(const QModelIndex &index, const QVariant &value) const
{
    const std::optional<Dbptr> place =
        index.column() > 0 ? d->place(index.column(), index.row()) : std::nullopt;
    if (!place)
        return OvTranslation::tr("there is no such cell");
    try {
        QDbptr cell(d->display->getConnection(), *place);
        cell.request(QStringLiteral("dbcheckv"), {QVariantMap{{d->column(index.column())->name, value}}});
    } catch (const std::exception &error) {
        return reasonOf(QString::fromUtf8(error.what()));
    }
    return {};
}

QString OrvaneTableModel::editError() const
{
    return d->editError;
}

int OrvaneTableModel::addScratchRow()
{
    const int added = d->own->dbAddchk(QString());
    emit modelReset();
    return added;
}

void OrvaneTableModel::copyToScratchRow(int row)
{
    Dbptr place = d->own->getDbptr();
    place.record = row; // made directly: a lookup takes no negative numbers, which the null record has
    QDbptr record(d->own->getConnection(), place);
    record.dbGet(true);
}

void OrvaneTableModel::crunch()
{
    if (!d->own->isValid())
        return;
    d->own->dbCrunch();
    if (d->display != d->own && tableIsView())
        d->display->dbCrunch();
    emit modelReset();
    letOthersCatchUp();
}
