#include "row_header.h"

#include <algorithm>

#include <QItemSelectionModel>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionHeader>
#include <QTableView>

namespace {

// 14 MB of sections, and some milliseconds to make them.
constexpr int mostSectionsOfItsOwn = 1'000'000;

} // namespace

void RowWindow::setTable(QAbstractItemModel *table)
{
    beginResetModel();
    m_table = table;
    endResetModel();
}

void RowWindow::setFirst(int row)
{
    if (row != m_first) {
        m_first = row;
        emit headerDataChanged(Qt::Vertical, 0, m_count - 1);
    }
}

void RowWindow::setCount(int rows)
{
    if (rows != m_count) {
        beginResetModel();
        m_count = rows;
        endResetModel();
    }
}

QVariant RowWindow::headerData(int section, Qt::Orientation orientation, int role) const
{
    return m_table != nullptr && orientation == Qt::Vertical
               ? m_table->headerData(m_first + section, orientation, role)
               : QVariant();
}

RowHeader::RowHeader(QTableView *view) : TableHeader(Qt::Vertical, view), m_mostSections(mostSectionsOfItsOwn)
{
    connect(this, &QHeaderView::sectionPressed, this,
            [this](int section) { emitFor(section, &RowHeader::rowPressed); });
    connect(this, &QHeaderView::sectionEntered, this,
            [this](int section) { emitFor(section, &RowHeader::rowEntered); });
}

void RowHeader::emitFor(int section, void (RowHeader::*signal)(int))
{
    const int row = placeInTable(section);
    if (row < rows()) {
        emit(this->*signal)(row);
    }
}

void RowHeader::setModel(QAbstractItemModel *model)
{
    if (m_shown != nullptr) {
        disconnect(m_shown, nullptr, this, SLOT(followTable()));
    }
    m_shown = model;
    const bool isLarge = model != nullptr && model->rowCount() > m_mostSections;
    m_window.setTable(model);
    TableHeader::setModel(isLarge ? static_cast<QAbstractItemModel *>(&m_window) : model);
    if (model != nullptr) {
        for (const char *signal :
             {SIGNAL(modelReset()), SIGNAL(layoutChanged()), SIGNAL(rowsInserted(QModelIndex, int, int)),
              SIGNAL(rowsRemoved(QModelIndex, int, int))}) {
            connect(model, signal, this, SLOT(followTable()), Qt::UniqueConnection);
        }
    }
}

void RowHeader::followTable()
{
    const bool isLarge = rows() > m_mostSections;
    if (isLarge != isWindow()) {
        TableHeader::setModel(isLarge ? static_cast<QAbstractItemModel *>(&m_window) : m_shown.data());
        if (!isLarge && table().selectionModel() != nullptr) {
            setSelectionModel(table().selectionModel());
        }
        emit rowsChanged();
    } else if (isLarge) {
        viewport()->update();
        emit rowsChanged();
    }
}

// The selection is of rows of the table; a header of the toolkit takes one of its own model only.
void RowHeader::setSelectionModel(QItemSelectionModel *selection)
{
    if (selection->model() == model()) {
        TableHeader::setSelectionModel(selection);
    }
    const auto update = QOverload<>::of(&QWidget::update);
    connect(selection, &QItemSelectionModel::selectionChanged, viewport(), update, Qt::UniqueConnection);
}

void RowHeader::setMostSections(int rows)
{
    m_mostSections = rows;
    followTable();
}

void RowHeader::makeRoomFor(int rows)
{
    // Never less: the sections would be made anew each time that the window's height changes.
    m_room = std::max(m_room, rows);
    m_window.setCount(m_room);
}

void RowHeader::paintSection(QPainter *painter, const QRect &rect, int section) const
{
    if (isWindow() && placeInTable(section) >= rows()) {
        QStyleOptionHeader option;
        initStyleOption(&option);
        option.rect = rect;
        style()->drawControl(QStyle::CE_HeaderEmptyArea, &option, painter, this);
        return;
    }
    TableHeader::paintSection(painter, rect, section);
}
