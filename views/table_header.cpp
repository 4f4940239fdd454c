#include "table_header.h"

#include <algorithm>
#include <utility>

#include <QHelpEvent>
#include <QHoverEvent>
#include <QIcon>
#include <QItemSelectionModel>
#include <QPainter>
#include <QPixmap>
#include <QStyle>
#include <QStyleOptionHeader>
#include <QTableView>

#include "long_tip.h"

TableHeader::TableHeader(Qt::Orientation orientation, QTableView *view)
    : QHeaderView(orientation, view), m_table(*view)
{
    setSectionsClickable(true);
    setHighlightSections(true);
    connect(this, &QHeaderView::sectionPressed, this, [this](int section) { m_pressed = section; });
    connect(this, &QHeaderView::sectionEntered, this, [this](int section) { m_pressed = section; });
}

void TableHeader::paintEvent(QPaintEvent *event)
{
    m_selected = SelectedSections();
    const QItemSelectionModel *selection = m_table.selectionModel();
    const QAbstractItemModel *model = m_table.model();
    const bool ours = orientation() == Qt::Horizontal || !sectionsMoved();
    if (ours && count() > 0 && model != nullptr && selection != nullptr && selection->hasSelection()) {
        int first = 0, last = count() - 1;
        if (!sectionsMoved()) { // else those in sight may be any
            // One more at each end, which its neighbour looks at.
            const bool mirrored = orientation() == Qt::Horizontal && isRightToLeft();
            const int end =
                (orientation() == Qt::Horizontal ? viewport()->width() : viewport()->height()) - 1;
            const int left = visualIndexAt(mirrored ? end : 0), right = visualIndexAt(mirrored ? 0 : end);
            first = std::max(left - 1, 0);
            last = right < 0 ? last : std::min(right + 1, last);
        }
        m_selected =
            SelectedSections(selection->selection(), orientation(), placeInTable(first), placeInTable(last),
                             orientation() == Qt::Horizontal ? model->rowCount() : model->columnCount());
    }
    QHeaderView::paintEvent(event);
}

QStyle::State TableHeader::stateOf(int section) const
{
    QStyle::State state = QStyle::State_None;
    state.setFlag(QStyle::State_Enabled, isEnabled());
    state.setFlag(QStyle::State_Active, window()->isActiveWindow());
    if (sectionsClickable()) {
        state.setFlag(QStyle::State_MouseOver, section == m_hovered);
        if (section == m_pressed) {
            state |= QStyle::State_Sunken;
        } else if (highlightSections()) {
            state.setFlag(QStyle::State_On, m_selected.touches(placeInTable(section)));
            state.setFlag(QStyle::State_Sunken, m_selected.covers(placeInTable(section)));
        }
    }
    return state;
}

bool TableHeader::isCovered(int visual) const
{
    const int section = logicalIndex(visual);
    return section >= 0 && m_selected.covers(placeInTable(section));
}

bool TableHeader::isFirstShown(int visual) const
{
    for (int place = visual - 1; place >= 0; --place) {
        if (!isSectionHidden(logicalIndex(place))) {
            return false;
        }
    }
    return true;
}

bool TableHeader::isLastShown(int visual) const
{
    for (int place = visual + 1; place < count(); ++place) {
        if (!isSectionHidden(logicalIndex(place))) {
            return false;
        }
    }
    return true;
}

// As the toolkit fills it in.
QStyleOptionHeader TableHeader::optionOf(int section, const QRect &rect) const
{
    const auto asked = [this, section](int role) {
        return model()->headerData(section, orientation(), role);
    };
    QStyleOptionHeader option;
    initStyleOption(&option);
    option.rect = rect;
    option.section = section;
    option.orientation = orientation();
    option.state |= stateOf(section);
    const bool isSorted = isSortIndicatorShown() && sortIndicatorSection() == section;
    if (isSorted) {
        option.sortIndicator = sortIndicatorOrder() == Qt::AscendingOrder ? QStyleOptionHeader::SortDown
                                                                          : QStyleOptionHeader::SortUp;
    }
    const QVariant alignment = asked(Qt::TextAlignmentRole);
    option.textAlignment = alignment.isValid() ? Qt::Alignment(alignment.toInt()) : defaultAlignment();
    option.iconAlignment = Qt::AlignVCenter;
    option.text = asked(Qt::DisplayRole).toString();

    int margin = 2 * style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    if (isSorted && style()->styleHint(QStyle::SH_Header_ArrowAlignment, nullptr, this) & Qt::AlignVCenter) {
        margin += style()->pixelMetric(QStyle::PM_HeaderMarkSize, nullptr, this);
    }
    const QVariant decoration = asked(Qt::DecorationRole);
    option.icon = qvariant_cast<QIcon>(decoration);
    if (option.icon.isNull()) {
        option.icon = qvariant_cast<QPixmap>(decoration);
    }
    if (!option.icon.isNull()) {
        margin += style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) +
                  style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    }
    if (textElideMode() != Qt::ElideNone) {
        const QRect room = style()->subElementRect(QStyle::SE_HeaderLabel, &option, this);
        option.text = option.fontMetrics.elidedText(option.text, textElideMode(), room.width() - margin);
    }
    const QVariant foreground = asked(Qt::ForegroundRole);
    if (foreground.canConvert<QBrush>()) {
        option.palette.setBrush(QPalette::ButtonText, qvariant_cast<QBrush>(foreground));
    }
    const QVariant background = asked(Qt::BackgroundRole);
    if (background.canConvert<QBrush>()) {
        option.palette.setBrush(QPalette::Button, qvariant_cast<QBrush>(background));
        option.palette.setBrush(QPalette::Window, qvariant_cast<QBrush>(background));
    }

    const int visual = visualIndex(section);
    bool first = isFirstShown(visual), last = isLastShown(visual);
    if (orientation() == Qt::Horizontal && isRightToLeft()) {
        std::swap(first, last);
    }
    option.position = first && last ? QStyleOptionHeader::OnlyOneSection
                      : first       ? QStyleOptionHeader::Beginning
                      : last        ? QStyleOptionHeader::End
                                    : QStyleOptionHeader::Middle;
    const bool before = isCovered(visual - 1), after = isCovered(visual + 1);
    option.selectedPosition = before && after ? QStyleOptionHeader::NextAndPreviousAreSelected
                              : before        ? QStyleOptionHeader::PreviousIsSelected
                              : after         ? QStyleOptionHeader::NextIsSelected
                                              : QStyleOptionHeader::NotAdjacent;
    return option;
}

void TableHeader::paintSection(QPainter *painter, const QRect &rect, int section) const
{
    if (!rect.isValid()) {
        return;
    }
    if (orientation() == Qt::Vertical && sectionsMoved()) {
        QHeaderView::paintSection(painter, rect, section); // nobody moves rows of a large table
        return;
    }
    const QStyleOptionHeader option = optionOf(section, rect);
    const QPointF origin = painter->brushOrigin();
    if (model()->headerData(section, orientation(), Qt::BackgroundRole).isValid()) {
        painter->setBrushOrigin(rect.topLeft());
    }
    style()->drawControl(QStyle::CE_Header, &option, painter, this);
    painter->setBrushOrigin(origin);
}

// The toolkit keeps to itself which sections the mouse is over and has pressed.
bool TableHeader::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
        m_hovered = logicalIndexAt(static_cast<QHoverEvent *>(event)->pos());
        break;
    case QEvent::HoverLeave:
    case QEvent::Leave:
        m_hovered = -1;
        break;
    default:
        break;
    }
    return QHeaderView::event(event);
}

bool TableHeader::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && model() != nullptr) {
        const auto &help = static_cast<const QHelpEvent &>(*event);
        const int section = logicalIndexAt(help.pos());
        const QString text =
            section < 0 ? QString() : model()->headerData(section, orientation(), Qt::ToolTipRole).toString();
        if (LongTip::isFor(text)) {
            LongTip::show(help.globalPos(), text, *viewport());
            return true;
        }
    }
    return QHeaderView::viewportEvent(event);
}

void TableHeader::mouseReleaseEvent(QMouseEvent *event)
{
    QHeaderView::mouseReleaseEvent(event);
    m_pressed = -1;
}
