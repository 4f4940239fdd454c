// Tables with more rows than have sections of their own in the header. Rows are of one height, in the order
// of the model and none is hidden, so their places follow from their numbers: the scroll bar counts rows, and
// only distances on the screen are in pixels. Of shorter tables all this is the toolkit's.
#include <orvanetableview.h>

#include <algorithm>

#include <QAccessible>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QScopeGuard>
#include <QScrollBar>
#include <QSignalBlocker>

#include <orvanetablemodel.h>

#include "row_header.h"

namespace {

// Rows further away than can be said in pixels are said to be here.
constexpr int farBelow = 1 << 29;
constexpr int farAbove = -farBelow;

qint64 divideUp(qint64 value, int divisor)
{
    return (value + divisor - 1) / divisor;
}

} // namespace

bool OrvaneTableView::isLong() const
{
    return m_rows != nullptr && m_rows->isWindow() && m_model != nullptr;
}

// Where the row would stand if the table began at 0.
qint64 OrvaneTableView::pixelsAbove(int row) const
{
    return qint64(row) * verticalHeader()->defaultSectionSize();
}

// Shows the rows that the scroll bar says. As the toolkit has it, the bar's value is the row at the upper
// edge, and at its end the last row stands at the lower edge, with a part of a row at the upper.
void OrvaneTableView::placeRows()
{
    const QScrollBar &bar = *verticalScrollBar();
    const qint64 last = pixelsAbove(m_model->rowCount()) - viewport()->height();
    const bool atEnd = bar.maximum() > 0 && bar.value() == bar.maximum();
    m_topPixel = atEnd ? last : pixelsAbove(bar.value());
    const int height = verticalHeader()->defaultSectionSize();
    m_rows->setFirst(static_cast<int>(m_topPixel / height));
    m_rows->setOffset(static_cast<int>(m_topPixel % height));
}

// The rows that fit into the viewport; at least one.
int OrvaneTableView::rowsInView() const
{
    return std::max(1, viewport()->height() / verticalHeader()->defaultSectionSize());
}

int OrvaneTableView::rowAt(int y) const
{
    if (!isLong()) {
        return QTableView::rowAt(y);
    }
    if (y == farAbove || y == farBelow) {
        return y == farAbove ? m_rowFarAbove : m_rowFarBelow;
    }
    const qint64 pixel = m_topPixel + y;
    const qint64 row = pixel / verticalHeader()->defaultSectionSize();
    return pixel >= 0 && row < m_model->rowCount() ? static_cast<int>(row) : -1;
}

int OrvaneTableView::rowViewportPosition(int row) const
{
    if (!isLong()) {
        return QTableView::rowViewportPosition(row);
    }
    const qint64 y = pixelsAbove(row) - m_topPixel;
    // The toolkit selects what is between two places of the viewport, and asks for the rows there.
    if (y <= farAbove) {
        m_rowFarAbove = row;
        return farAbove;
    }
    if (y >= farBelow) {
        m_rowFarBelow = row;
        return farBelow;
    }
    return static_cast<int>(y);
}

int OrvaneTableView::rowHeight(int row) const
{
    return isLong() ? verticalHeader()->defaultSectionSize() : QTableView::rowHeight(row);
}

bool OrvaneTableView::isIndexHidden(const QModelIndex &index) const
{
    return isLong() ? isColumnHidden(index.column()) : QTableView::isIndexHidden(index);
}

QModelIndex OrvaneTableView::indexAt(const QPoint &place) const
{
    if (!isLong()) {
        return QTableView::indexAt(place);
    }
    const int row = rowAt(place.y()), column = columnAt(place.x());
    return row >= 0 && column >= 0 ? m_model->index(row, column) : QModelIndex();
}

QRect OrvaneTableView::visualRect(const QModelIndex &index) const
{
    if (!isLong()) {
        return QTableView::visualRect(index);
    }
    if (!index.isValid() || isIndexHidden(index)) {
        return {};
    }
    // To the sides as the toolkit has it, with a row of the header's sections.
    QRect rect = QTableView::visualRect(m_model->index(0, index.column()));
    rect.moveTop(rowViewportPosition(index.row()));
    if (rect.top() == farAbove || rect.top() == farBelow) {
        rect.setHeight(1); // its centre is to be told from all others
    }
    return rect;
}

QRegion OrvaneTableView::visualRegionForSelection(const QItemSelection &selection) const
{
    if (!isLong()) {
        return QTableView::visualRegionForSelection(selection);
    }
    QRegion region;
    const int first = m_rows->first(), last = first + rowsInView() + 1;
    for (const QItemSelectionRange &range : selection) {
        const int top = std::max(range.top(), first), bottom = std::min(range.bottom(), last);
        if (range.isValid() && top <= bottom) {
            const int y = rowViewportPosition(top);
            region += QRect(0, y, viewport()->width(), rowViewportPosition(bottom) + rowHeight(bottom) - y);
        }
    }
    return region;
}

// Told from the row where the mouse was pressed, so that a drag over any part of the table can be said in
// pixels.
int OrvaneTableView::verticalOffset() const
{
    if (!isLong()) {
        return QTableView::verticalOffset();
    }
    return static_cast<int>(std::clamp<qint64>(m_topPixel - m_pressedAt, farAbove, farBelow));
}

void OrvaneTableView::mousePressEvent(QMouseEvent *event)
{
    if (isLong()) {
        m_pressedAt = m_topPixel;
    }
    QTableView::mousePressEvent(event);
}

void OrvaneTableView::updateGeometries()
{
    if (!isLong() || m_updatingGeometries) {
        QTableView::updateGeometries();
        return;
    }
    m_updatingGeometries = true;
    const auto done = qScopeGuard([this] { m_updatingGeometries = false; });
    const int height = verticalHeader()->defaultSectionSize();
    m_rows->makeRoomFor(maximumViewportSize().height() / height + 2);
    QScrollBar &bar = *verticalScrollBar();
    const int row = bar.value();
    {
        // The toolkit counts the sections of the header.
        const QSignalBlocker quiet(bar);
        QTableView::updateGeometries();
    }
    bar.setRange(0, std::max(0, m_model->rowCount() - rowsInView()));
    bar.setPageStep(rowsInView());
    bar.setSingleStep(1);
    bar.setValue(row);
    placeRows();
}

void OrvaneTableView::doItemsLayout()
{
    QTableView::doItemsLayout();
    if (isLong()) {
        placeRows(); // the toolkit has taken the header's sections for the rows
    }
}

void OrvaneTableView::scrollContentsBy(int dx, int dy)
{
    if (!isLong()) {
        QTableView::scrollContentsBy(dx, dy);
        return;
    }
    if (dx != 0) {
        QTableView::scrollContentsBy(dx, 0);
    }
    const qint64 before = m_topPixel;
    placeRows();
    const qint64 pixels = before - m_topPixel;
    if (pixels == 0) {
        return;
    }
    if (std::abs(pixels) < viewport()->height()) {
        scrollDirtyRegion(0, static_cast<int>(pixels));
        viewport()->scroll(0, static_cast<int>(pixels));
    } else {
        updateEditorGeometries();
        viewport()->update();
    }
}

void OrvaneTableView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (!isLong()) {
        QTableView::scrollTo(index, hint);
        return;
    }
    if (!index.isValid() || index.model() != m_model || index.row() >= m_model->rowCount() ||
        isIndexHidden(index)) {
        return;
    }
    executeDelayedItemsLayout();
    QScrollBar &bar = *verticalScrollBar();
    {
        // To the side as the toolkit does it, with a row of the header's sections.
        const QSignalBlocker quiet(bar);
        const int row = bar.value();
        QTableView::scrollTo(m_model->index(0, index.column()),
                             hint == PositionAtCenter ? hint : EnsureVisible);
        bar.setValue(row);
    }
    const int height = verticalHeader()->defaultSectionSize();
    if (hint == EnsureVisible) {
        const qint64 y = pixelsAbove(index.row()) - m_topPixel;
        if (y >= 0 && y + height <= viewport()->height()) {
            return;
        }
        hint = y < 0 || height > viewport()->height() ? PositionAtTop : PositionAtBottom;
    }
    const int above = hint == PositionAtTop      ? 0
                      : hint == PositionAtBottom ? rowsInView() - 1
                                                 : std::max(0, viewport()->height() / 2 / height - 1);
    bar.setValue(std::max(0, index.row() - above));
}

QModelIndex OrvaneTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (!isLong()) {
        return QTableView::moveCursor(action, modifiers);
    }
    const QHeaderView &columns = *horizontalHeader();
    std::vector<int> shown; // from left to right
    for (int place = 0; place < columns.count(); ++place) {
        const int column = columns.logicalIndex(place);
        if (!columns.isSectionHidden(column)) {
            shown.push_back(column);
        }
    }
    const int rows = m_model->rowCount();
    if (shown.empty() || rows == 0) {
        return {};
    }
    const int lastPlace = static_cast<int>(shown.size()) - 1;
    const QModelIndex current = currentIndex();
    if (!current.isValid()) {
        return m_model->index(0, shown.front());
    }
    const auto found = std::find(shown.begin(), shown.end(), current.column());
    int place = found == shown.end() ? 0 : static_cast<int>(found - shown.begin());
    qint64 row = current.row();
    const int height = verticalHeader()->defaultSectionSize();
    const bool mirrored = isRightToLeft();
    const bool toEnd = modifiers & Qt::ControlModifier;
    const auto step = [&](int by, bool wraps) {
        place += by;
        if (!wraps) {
            place = std::clamp(place, 0, lastPlace);
        } else if (place < 0 || place > lastPlace) {
            place = place < 0 ? lastPlace : 0;
            row = (row + by + rows) % rows;
        }
    };
    switch (action) {
    case MoveUp:
        row -= 1;
        break;
    case MoveDown:
        row += 1;
        break;
    case MovePrevious:
        step(-1, true);
        break;
    case MoveNext:
        step(1, true);
        break;
    case MoveLeft:
        step(mirrored ? 1 : -1, false);
        break;
    case MoveRight:
        step(mirrored ? -1 : 1, false);
        break;
    case MoveHome:
        place = 0;
        row = toEnd ? 0 : row;
        break;
    case MoveEnd:
        place = lastPlace;
        row = toEnd ? rows - 1 : row;
        break;
    case MovePageUp: // from the lower edge of the cell
        row -= divideUp(viewport()->height() - height + (showGrid() ? 2 : 1), height);
        break;
    case MovePageDown:
        row += viewport()->height() / height;
        break;
    }
    row = std::clamp<qint64>(row, 0, rows - 1);
    return m_model->index(static_cast<int>(row), shown[static_cast<std::size_t>(place)]);
}

void OrvaneTableView::followRows()
{
    if (isLong()) {
        placeRows();
    }
    viewport()->update();
    scheduleDelayedItemsLayout();
}

// The toolkit's own tells assistive programs of the first cell selected, for which it lists all.
void OrvaneTableView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    if (!QAccessible::isActive()) {
        QTableView::selectionChanged(selected, deselected);
        return;
    }
    const auto firstOf = [](const QItemSelection &selection) {
        QItemSelection first;
        if (!selection.isEmpty()) {
            const QModelIndex cell = selection.first().topLeft();
            first.select(cell, cell);
        }
        return first;
    };
    viewport()->update();
    QTableView::selectionChanged(firstOf(selected), firstOf(deselected));
}
