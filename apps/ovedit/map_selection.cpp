#include "map_selection.h"

#include <algorithm>
#include <exception>

#include <QItemSelectionModel>
#include <QLocale>
#include <QScopedValueRollback>
#include <QTabWidget>
#include <QToolTip>

#include <orvane/plot.h>
#include <orvane/util.h>

#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "row_records.h"

namespace {

const char originName[] = "origin";

// The toolkit looks through all runs of selected rows for each cell that it paints.
constexpr int mostRuns = 5000;

// No slot lets an exception out.
template <typename Work>
void guarded(Work work)
{
    try {
        work();
    } catch (const std::exception &error) {
        elog_log("selection on the map: %s", error.what());
    }
}

bool isSorted(const OrvaneTableModel &model)
{
    return model.getFacadeTableName() != model.getTableName();
}

} // namespace

MapSelection::MapSelection(OrvaneDatabaseView &view)
    : QObject(&view), m_view(view), m_products(view.findChild<QTabWidget *>("productsTabs"))
{
    if (m_products != nullptr) {
        connect(m_products, &QTabWidget::currentChanged, this, &MapSelection::lookForMap);
    }
    connect(&view, &OrvaneDatabaseView::stackItemChanged, this, &MapSelection::lookForMap);
}

OrvaneTableView *MapSelection::originTable() const
{
    for (OrvaneTableView *table : m_view.findChildren<OrvaneTableView *>()) {
        if (OrvaneTableModel *model = table->model();
            model != nullptr && model->getTableName() == originName) {
            return table;
        }
    }
    return nullptr;
}

void MapSelection::lookForMap()
{
    guarded([this] {
        auto *map = m_products->findChild<OvEventMap *>();
        if (map == nullptr) {
            return;
        }
        const bool isNew = map != m_map;
        if (isNew) {
            m_map = map;
            connect(map, &OvEventMap::recordsSelected, this, &MapSelection::takeFromMap);
            connect(map, &OvEventMap::recordActivated, this, &MapSelection::showInTable);
        }
        if (followTable(originTable()) || isNew) {
            takeFromTable();
        }
    });
}

// A table's selection model changes with its model. True when there is another one to follow.
bool MapSelection::followTable(OrvaneTableView *table)
{
    QItemSelectionModel *selection = table == nullptr ? nullptr : table->selectionModel();
    if (selection == nullptr || selection == m_followed) {
        return false;
    }
    m_followed = selection;
    connect(selection, &QItemSelectionModel::selectionChanged, this, &MapSelection::takeFromTable);
    // Rows that stay selected may show other records then.
    connect(table->model(), &QAbstractItemModel::layoutChanged, this, &MapSelection::takeOtherRows,
            Qt::UniqueConnection);
    connect(table->model(), &QAbstractItemModel::modelReset, this, &MapSelection::takeOtherRows,
            Qt::UniqueConnection);
    return true;
}

const std::vector<qint64> &MapSelection::recordsOfRows(OrvaneTableModel &model)
{
    const QString view = QStringLiteral("%1 %2").arg(model.getFacadeTableName()).arg(model.rowCount());
    if (view != m_sortedView) {
        const std::vector<std::int64_t> records = ::recordsOfRows(model.getFacadeDbptr(), model.getDbptr());
        m_records.assign(records.begin(), records.end());
        m_sortedView = view;
    }
    return m_records;
}

QVector<qint64> MapSelection::selectedRecords(OrvaneTableView &table)
{
    QVector<qint64> rows;
    for (const QItemSelectionRange &range : table.selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.append(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    OrvaneTableModel &model = *table.model();
    if (rows.isEmpty() || !isSorted(model)) {
        return rows;
    }
    const std::vector<qint64> &records = recordsOfRows(model);
    for (qint64 &row : rows) {
        row = row < static_cast<qint64>(records.size()) ? records[static_cast<std::size_t>(row)] : -1;
    }
    rows.removeAll(-1);
    return rows;
}

void MapSelection::takeOtherRows()
{
    m_sortedView.clear(); // the next view may have the name of the last
    takeFromTable();
}

void MapSelection::takeFromTable()
{
    guarded([this] {
        OrvaneTableView *table = m_map == nullptr || m_busy ? nullptr : originTable();
        if (table == nullptr || table->selectionModel() == nullptr) {
            return;
        }
        const QVector<qint64> records = selectedRecords(*table);
        m_map->setSelectedRecords(records);
        if (records.size() == 1) {
            m_map->showRecord(records.first());
        }
    });
}

std::vector<int> MapSelection::rowsOf(const QVector<qint64> &records, OrvaneTableModel &model)
{
    const qint64 count = model.rowCount();
    std::vector<int> rows;
    if (!isSorted(model)) {
        for (const qint64 record : records) {
            if (record < count) {
                rows.push_back(static_cast<int>(record));
            }
        }
        return rows;
    }
    const std::vector<qint64> &recordOfRow = recordsOfRows(model);
    for (std::size_t row = 0; row < recordOfRow.size(); ++row) {
        if (std::binary_search(records.begin(), records.end(), recordOfRow[row])) {
            rows.push_back(static_cast<int>(row));
        }
    }
    return rows;
}

void MapSelection::selectRows(const std::vector<int> &rows, OrvaneTableView &table)
{
    const OrvaneTableModel &model = *table.model();
    QItemSelection selection;
    std::size_t next = 0;
    while (next < rows.size() && selection.size() < mostRuns) {
        std::size_t last = next;
        while (last + 1 < rows.size() && rows[last + 1] == rows[last] + 1) {
            ++last;
        }
        selection.append(QItemSelectionRange(model.index(rows[next], 0),
                                             model.index(rows[last], model.columnCount() - 1)));
        next = last + 1;
    }
    // Cleared first: to compare many runs with many others takes the toolkit long.
    table.selectionModel()->clearSelection();
    table.selectionModel()->select(selection, QItemSelectionModel::Select);
    if (next < rows.size()) {
        const QLocale locale;
        QToolTip::showText(m_map->mapToGlobal(QPoint(10, m_map->height() - 60)),
                           tr("The table shows the first %1 of the %2 rows selected.")
                               .arg(locale.toString(static_cast<qlonglong>(next)),
                                    locale.toString(static_cast<qlonglong>(rows.size()))),
                           m_map);
    }
}

void MapSelection::takeFromMap(const QVector<qint64> &records)
{
    guarded([&] {
        OrvaneTableView *table = originTable();
        if (table == nullptr || table->selectionModel() == nullptr) {
            return;
        }
        const QScopedValueRollback<bool> busy(m_busy, true);
        const std::vector<int> rows = rowsOf(records, *table->model());
        selectRows(rows, *table);
        if (!rows.empty()) {
            table->scrollToRow(rows.front());
        }
    });
}

void MapSelection::showInTable(qint64 record)
{
    guarded([&] {
        m_view.setFocusTable(originName);
        takeFromMap({record});
        if (OrvaneTableView *table = originTable()) {
            table->setFocus();
        }
    });
}
