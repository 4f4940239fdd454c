// Painting the table view: which rows and columns are to be seen, the lines between them, and what stands
// where there are none. The cells are painted by CellPainter.
#include <orvanetableview.h>

#include <algorithm>
#include <cmath>

#include <QHeaderView>
#include <QHoverEvent>
#include <QItemSelectionModel>
#include <QPaintEvent>
#include <QPainter>

#include <orvane/tr.h>
#include <orvanetablemodel.h>

#include "cell_painter.h"
#include "slot_guard.h"

bool OrvaneTableView::paintsByItself() const
{
    if (selectionModel() == nullptr || itemDelegate() == nullptr) {
        return false;
    }
    // What only the toolkit's own painting knows of: hidden rows, things dragged over the table. It would
    // take the rows of a long table for the sections of its header.
    return isLong() || (!verticalHeader()->sectionsHidden() && state() != DraggingState && !acceptDrops() &&
                        dirtyRegionOffset().isNull());
}

void OrvaneTableView::paintEvent(QPaintEvent *event)
{
    loggingErrors("OrvaneTableView::paintEvent", [&] {
        if (m_model == nullptr || !paintsByItself()) {
            QTableView::paintEvent(event);
        } else {
            paintPage(event->region());
        }
        if (m_model != nullptr) {
            paintWhatIsMissing();
        }
    });
}

void OrvaneTableView::paintWhatIsMissing()
{
    if (m_model->isOutdated()) {
        tellOutdated();
        return;
    }
    const QHeaderView &columns = *horizontalHeader();
    const bool noRows = verticalHeader()->count() == 0;
    if (!noRows && columns.hiddenSectionCount() < columns.count()) {
        return;
    }
    // A blank page would leave open whether anything is still to come.
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     noRows ? OvTranslation::tr("No records") : OvTranslation::tr("No column is shown"));
}

// The rows are there, and blank.
void OrvaneTableView::tellOutdated()
{
    QPainter painter(viewport());
    const QRect room = viewport()->rect().adjusted(20, 20, -20, -20);
    const QString text =
        OvTranslation::tr("Another program has replaced a table since this view was made of it, "
                          "and its rows stand for nothing any more. Close the view and make it again.");
    const QRect place =
        painter.boundingRect(room, Qt::AlignCenter | Qt::TextWordWrap, text).adjusted(-10, -6, 10, 6);
    painter.fillRect(place, palette().brush(QPalette::ToolTipBase));
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawRect(place);
    painter.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void OrvaneTableView::paintPage(const QRegion &region)
{
    Page page = pageWithin(region.boundingRect());
    if (page.rows.empty() || page.columns.empty()) {
        return;
    }
    page.region = region;
    const int top = page.rows.front().row, bottom = page.rows.back().row;
    if (bottom - top < static_cast<int>(page.rows.size())) { // nobody has moved rows
        m_model->readAhead(top, bottom + 1);
    }
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange &range : selection) {
        if (range.top() <= bottom && range.bottom() >= top) {
            page.selected.emplace_back(QPoint(range.left(), range.top()),
                                       QPoint(range.right(), range.bottom()));
        }
    }
    if (hasFocus() || viewport()->hasFocus()) {
        page.current = currentIndex();
    }
    page.hovered = m_hovered;
    QPainter painter(viewport());
    QStyleOptionViewItem option = viewOptions();
    option.widget = this;
    m_painter->paint(painter, page, option);
    if (showGrid()) {
        paintGrid(painter, page, option);
    }
}

Page OrvaneTableView::pageWithin(const QRect &area) const
{
    Page page;
    const int grid = showGrid() ? 1 : 0;
    const QHeaderView &rows = *verticalHeader();
    const QHeaderView &columns = *horizontalHeader();
    const bool mirrored = isRightToLeft();

    const bool inOrder = isLong();
    const int top = inOrder ? rowAt(area.top()) : rows.visualIndexAt(area.top());
    int bottom = inOrder ? rowAt(area.bottom()) : rows.visualIndexAt(area.bottom());
    if (bottom < 0) {
        bottom = (inOrder ? m_model->rowCount() : rows.count()) - 1;
    }
    for (int place = top; place >= 0 && place <= bottom; ++place) {
        const int row = inOrder ? place : rows.logicalIndex(place);
        page.rows.push_back(
            {row, rowViewportPosition(row), rowHeight(row) - grid, alternatingRowColors() && place % 2 == 1});
    }

    int left = columns.visualIndexAt(mirrored ? area.right() : area.left());
    int right = columns.visualIndexAt(mirrored ? area.left() : area.right());
    left = std::max(left, 0);
    if (right < 0) {
        right = columns.count() - 1;
    }
    for (int place = left; place <= right; ++place) {
        const int column = columns.logicalIndex(place);
        if (!columns.isSectionHidden(column)) {
            page.columns.push_back({column, columns.sectionViewportPosition(column) + (mirrored ? grid : 0),
                                    columns.sectionSize(column) - grid});
        }
    }
    return page;
}

// Below the rows and to the right of the columns (in layouts from right to left: to the left of them), as far
// as there are cells.
void OrvaneTableView::paintGrid(QPainter &painter, const Page &page, const QStyleOptionViewItem &option)
{
    const bool mirrored = isRightToLeft();
    const auto colour = static_cast<QRgb>(style()->styleHint(QStyle::SH_Table_GridLineColor, &option, this));
    painter.setPen(QPen(QColor::fromRgba(colour), 0, gridStyle()));
    // The painter puts lines together pixel by pixel, which takes longer than all that is written in the
    // cells. They are filled instead wherever pixels are as wide as a unit or a whole part of it.
    const QTransform toPixels = painter.deviceTransform();
    const qreal pixels = toPixels.m11(); // in a unit
    const bool fills = gridStyle() == Qt::SolidLine && toPixels.type() <= QTransform::TxScale &&
                       pixels >= 1 && pixels == toPixels.m22() && pixels == std::floor(pixels);
    const auto drawLine = [&](int x, int y, int toX, int toY) {
        if (!fills) {
            painter.drawLine(x, y, toX, toY);
        } else if (x <= toX && y <= toY) {
            painter.fillRect(QRectF(x, y, toX - x + 1 / pixels, toY - y + 1 / pixels), painter.pen().color());
        }
    };
    const QRect bounds = page.region.boundingRect();
    const int tableEnd = horizontalHeader()->length() - horizontalHeader()->offset();
    const int left = mirrored ? std::max(bounds.left(), viewport()->width() - tableEnd) : bounds.left();
    const int right = mirrored ? bounds.right() : std::min(bounds.right(), tableEnd - 1);
    const Page::Row &last = page.rows.back();
    const int lower = std::min(bounds.bottom(), last.y + last.height);
    for (const Page::Row &row : page.rows) {
        drawLine(left, row.y + row.height, right, row.y + row.height);
    }
    for (const Page::Column &column : page.columns) {
        const int x = mirrored ? column.x - 1 : column.x + column.width;
        drawLine(x, bounds.top(), x, lower);
    }
}

// The toolkit keeps to itself which cell the mouse is over.
bool OrvaneTableView::viewportEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
        m_hovered = indexAt(static_cast<QHoverEvent *>(event)->pos());
        break;
    case QEvent::HoverLeave:
    case QEvent::Leave:
        m_hovered = QModelIndex();
        break;
    default:
        break;
    }
    return QTableView::viewportEvent(event);
}

void OrvaneTableView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange) {
        m_painter->forgetLooks();
    }
    QTableView::changeEvent(event);
}
