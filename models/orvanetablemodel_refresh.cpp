// Taking in what changed in the table: by other programs, by other windows, by a crunch. Views of the model
// keep their place, for nothing but real ends resets it: rows are inserted and removed, moved as a change of
// layout, and their cells announced as changed.

#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>

#include "answered.h"
#include "noted_records.h"
#include "orvanedatabasemodel_p.h"
#include "orvanetablemodel_p.h"
#include <orvane/util.h>

namespace {

constexpr std::chrono::milliseconds searchTime{1000}; // for all noted records together
// A table that others change all the time is not sorted all the time: between two sorts that nobody asked for
// there are so many times as long as the last one took.
constexpr int restBetweenSorts = 10;

QDbptr::TableState stateOf(QDbptr *table)
{
    return table->isValid() ? answeredOrNone(QDbptr::TableState(), [&] { return table->getTableState(); })
                            : QDbptr::TableState();
}

// The rows of indexes, each once and in order.
QVector<qint64> rowsOf(const QModelIndexList &indexes)
{
    QVector<qint64> rows;
    rows.reserve(indexes.size());
    for (const QModelIndex &index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

} // namespace

// ---- What is known of the table ------------------------------------------------------------------

void OrvaneTableModel::Private::takeState()
{
    ownState = stateOf(own);
    displayState = display == own ? ownState : stateOf(display);
    ownRows = facade ? std::max(0, answered(0, [&] { return own->getRecordCount(); })) : 0;
}

bool OrvaneTableModel::isOutdated() const
{
    return d->outdated;
}

bool OrvaneTableModel::isRefreshing() const
{
    return d->refreshing;
}

bool OrvaneTableModel::isCurrent() const
{
    return stateOf(d->own).numbering == d->ownState.numbering;
}

// ---- Where records are ---------------------------------------------------------------------------

OrvaneTableModel::Rearranging::Rearranging(OrvaneTableModel &arranged)
    : model(arranged), before(arranged.persistentIndexList()), rows(rowsOf(before)), places(rows)
{
}

void OrvaneTableModel::Rearranging::apply(int rowCount)
{
    QModelIndexList now;
    now.reserve(before.size());
    for (const QModelIndex &index : before) {
        const auto at = std::lower_bound(rows.begin(), rows.end(), index.row()) - rows.begin();
        const qint64 row = places.at(static_cast<int>(at));
        now.append(row >= 0 && row < rowCount ? model.createIndex(static_cast<int>(row), index.column())
                                              : QModelIndex());
    }
    model.changePersistentIndexList(before, now);
}

// Where the records are in what was shown up to now, if it was crunched. False when nobody knows.
bool OrvaneTableModel::Private::followMoves(QVector<qint64> &places)
{
    QVector<qint64> asked = places;
    asked.append(0); // nothing is what is answered when nobody knows
    const QVector<qint64> moved = answeredOrNone(
        QVector<qint64>(), [&] { return display->movedRecords(displayState.numbering, asked); });
    for (int at = 0; at < places.size(); ++at)
        places[at] = moved.isEmpty() ? -1 : moved.at(at);
    return !moved.isEmpty();
}

// What tells the record in a row of the table from others: its primary key, or all that it holds.
QString OrvaneTableModel::Private::tellingExpression(int row)
{
    if (keyColumns.isEmpty()) {
        QStringList keys;
        for (const QString &key : answered(QList<QString>(), [&] { return own->getPrimaryKey(); }))
            keys += key.split(QLatin1String("::"));
        const QString stamp = answered(QString(), [&] { return own->getTimedateName(); });
        for (int number = 1; number <= columns().count(); ++number) {
            const TableColumn *field = column(number);
            if (field && (keys.isEmpty() ? field->name != stamp : keys.contains(field->name)))
                keyColumns.append(number);
        }
    }
    QStringList parts;
    for (const int number : qAsConst(keyColumns)) {
        const TableColumn *field = column(number);
        if (field)
            parts += NotedRecords::isEqual(field->name, answeredOrNone(QString(), [&] {
                                               return reader.text(*field, row, CellReader::Value).text;
                                           }));
    }
    return parts.join(QLatin1String(" && "));
}

void OrvaneTableModel::noteRows(const void *somebody, const QVector<int> &rows)
{
    d->noted.remove(somebody);
    // A view over a table that another program replaced is none of the table any more.
    if (rows.isEmpty() || rows.size() > NotedRecords::most || !d->own->isValid() || tableIsView() ||
        !isCurrent())
        return;
    NotedRecords &noted = d->noted[somebody];
    for (const int row : rows)
        if (row >= 0 && row < d->rows)
            noted.add(index(row, 0), d->tellingExpression(row));
}

void OrvaneTableModel::Private::findNoted(const QVector<qint64> &before, QVector<qint64> &places)
{
    const auto start = std::chrono::steady_clock::now();
    QVector<NotedRecords::Record> records;
    for (const NotedRecords &theirs : qAsConst(noted))
        records += theirs.records();
    for (const NotedRecords::Record &record : qAsConst(records)) {
        const auto at = std::lower_bound(before.begin(), before.end(), record.place.row());
        if (at == before.end() || *at != record.place.row() || record.expression.isEmpty() ||
            std::chrono::steady_clock::now() - start > searchTime)
            continue;
        qint64 &place = places[static_cast<int>(at - before.begin())];
        if (place < 0)
            place = NotedRecords::find(*display, record.expression, record.place.row());
    }
}

// ---- The order -----------------------------------------------------------------------------------

QVector<qint64> OrvaneTableModel::showOrder(const QString &key, bool reverse, QVector<qint64> rows)
{
    if (!rows.isEmpty())
        rows = d->sameRows(d->display, d->own, rows);
    d->dropFacade(this);
    const auto start = std::chrono::steady_clock::now();
    // Without a view there is the own order.
    d->facade = answered<OrvaneTableModel *>(nullptr, [&] {
        return d->database("sort").getSort(getTableName(), {key}, reverse, false, QString(), this);
    });
    d->sortEnded = std::chrono::steady_clock::now();
    d->sortTook = d->sortEnded - start;
    if (d->facade) {
        d->orderKey = key;
        d->orderReversed = reverse;
        d->show(d->facade->getQDbptr());
        connect(d->facade, SIGNAL(destroyed()), this, SLOT(facadeDestroyed()));
        if (!rows.isEmpty())
            rows = d->sameRows(d->own, d->display, rows);
    }
    return rows;
}

void OrvaneTableModel::sort(int column, Qt::SortOrder order)
{
    if (d->sorting) // from within the sort's own progress
        return;
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QString key = d->sortKey(column);
    if (!key.isEmpty()) {
        const QScopedValueRollback<bool> sorting(d->sorting, true);
        Rearranging rearranging(*this);
        if (!isCurrent())
            d->followMoves(rearranging.places);
        rearranging.places = showOrder(key, order == Qt::DescendingOrder, rearranging.places);
        d->findNoted(rearranging.rows, rearranging.places);
        d->takeState();
        rearranging.apply(rowCount());
    }
    emit layoutChanged({}, VerticalSortHint);
    if (d->resetAfterSorting)
        emit modelReset();
    else if (!key.isEmpty())
        announceRowCount();
}

bool OrvaneTableModel::Private::mayResort() const
{
    return std::chrono::steady_clock::now() - sortEnded >= restBetweenSorts * sortTook;
}

// ---- Taking changes in ---------------------------------------------------------------------------

void OrvaneTableModel::startOver()
{
    if (d->sorting) { // from within the progress of a sort
        d->resetAfterSorting = true;
        return;
    }
    d->resetAfterSorting = false;
    d->refreshQueued = false;
    if (refresh())
        return;
    beginResetModel();
    d->forgetTable();
    d->noted.clear();
    d->rows = d->askRowCount();
    d->takeState();
    endResetModel();
}

void OrvaneTableModel::setRows(int rows)
{
    if (rows > d->rows) {
        beginInsertRows({}, d->rows, rows - 1);
        d->rows = rows;
        endInsertRows();
    } else if (rows < d->rows) {
        beginRemoveRows({}, rows, d->rows - 1);
        d->rows = rows;
        endRemoveRows();
    }
}

bool OrvaneTableModel::refresh()
{
    const QDbptr::TableState own = stateOf(d->own);
    if (own.numbering < 0 || d->ownState.numbering < 0 || !d->display->isValid())
        return false;
    const bool moved = own.numbering != d->ownState.numbering;
    const bool displayMoved =
        d->display == d->own ? moved : stateOf(d->display).numbering != d->displayState.numbering;
    bool resort = false;
    if (d->facade) {
        const int rows = answered(0, [&] { return d->own->getRecordCount(); });
        resort = moved || own.version != d->ownState.version || rows != d->ownRows;
        if (resort && !moved && !d->mayResort()) {
            resort = false;
            queueRefresh(restBetweenSorts * d->sortTook);
        }
        if (resort && rows > d->rows)
            setRows(rows); // or records would be moved to rows that nobody knows yet
    } else if (displayMoved) {
        setRows(std::max(d->rows, d->askRowCount())); // likewise
    }
    if (resort || displayMoved)
        rearrange(displayMoved, resort);
    else
        d->columns().dropSamples();
    const bool sortIsDue = d->facade && d->refreshQueued;
    if (!sortIsDue)
        d->takeState();
    setRows(d->askRowCount());
    tellCellsChanged();
    noteAgain();
    if (std::exchange(d->resetAfterSorting, false)) // it changed again while it was sorted
        queueRefresh({});
    return true;
}

void OrvaneTableModel::rearrange(bool displayMoved, bool resort)
{
    const QScopedValueRollback<bool> sorting(d->sorting, true);
    const QScopedValueRollback<bool> refreshing(d->refreshing, true);
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    Rearranging rearranging(*this);
    const bool known = !displayMoved || d->followMoves(rearranging.places);
    if (resort)
        rearranging.places = showOrder(QString(d->orderKey), d->orderReversed, rearranging.places);
    else
        d->columns().dropSamples();
    if (!known && tableIsView())
        d->outdated = true;
    else if (!known)
        d->findNoted(rearranging.rows, rearranging.places);
    rearranging.apply(std::min(d->askRowCount(), d->rows));
    emit layoutChanged({}, VerticalSortHint);
}

void OrvaneTableModel::noteAgain()
{
    const QList<const void *> all = d->noted.keys();
    for (const void *somebody : all) {
        QVector<int> rows;
        for (const NotedRecords::Record &record : d->noted[somebody].records())
            if (record.place.isValid())
                rows.append(record.place.row());
        noteRows(somebody, rows);
    }
}

void OrvaneTableModel::queueRefresh(std::chrono::steady_clock::duration delay)
{
    if (d->refreshQueued)
        return;
    d->refreshQueued = true;
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(delay);
    QTimer::singleShot(milliseconds, this, [this] {
        if (d->refreshQueued)
            emit modelReset();
    });
}

void OrvaneTableModel::announceChanged(OrvaneTableModel *dtm)
{
    if (dtm != this)
        return;
    if (d->sorting) {
        d->resetAfterSorting = true;
        return;
    }
    d->told = true;
    emit modelReset();
}

// What the times of the files don't tell: another file with an older time, changes of a view's tables.
void OrvaneTableModel::catchUp()
{
    if (std::exchange(d->told, false) || d->sorting || !d->own->isValid())
        return;
    const QDbptr::TableState now = stateOf(d->own);
    if (now.numbering != d->ownState.numbering || d->askRowCount() != d->rows)
        emit modelReset();
    else if (now.version != d->ownState.version)
        refresh();
}

// ---- What others show of the same records ---------------------------------------------------------

bool OrvaneTableModel::Private::sharesRecordsWith(Private &other)
{
    const QStringList &others = other.memberTables();
    const QStringList &ours = memberTables();
    return std::any_of(ours.begin(), ours.end(), [&](const QString &name) { return others.contains(name); });
}

const QStringList &OrvaneTableModel::Private::memberTables()
{
    if (members.isEmpty()) {
        const bool isView = answered(false, [&] { return own->tableIsView(); });
        members = isView ? answered(QList<QString>(), [&] { return own->getViewTables(); })
                         : QList<QString>{answered(QString(), [&] { return own->getTableName(); })};
    }
    return members;
}

// The models that somebody may look at, but for this one.
template <class Visit>
void OrvaneTableModel::forOthers(Visit visit)
{
    if (!d->parent)
        return;
    const QList<OrvaneTableModel *> models = d->parent->d->tableModels.values();
    for (OrvaneTableModel *model : models)
        if (model != this && !model->tableIsFacade() && model->d->own->isValid() &&
            d->sharesRecordsWith(*model->d))
            visit(*model);
}

void OrvaneTableModel::letOthersCatchUp()
{
    forOthers([](OrvaneTableModel &other) {
        other.d->told = false;
        other.catchUp();
    });
}

void OrvaneTableModel::letOthersShowChange()
{
    forOthers([](OrvaneTableModel &other) { other.tellCellsChanged(); });
}

void OrvaneTableModel::tellCellsChanged()
{
    d->reader.forget();
    if (d->rows > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(d->rows - 1, columnCount() - 1));
}
