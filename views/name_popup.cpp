#include "name_popup.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QScreen>
#include <QScrollBar>

namespace {

constexpr int mostRows = 8;
constexpr int widest = 640;    // pixels
constexpr int narrowest = 180; // pixels
constexpr int betweenColumns = 24;
constexpr int widestFirst = 340;

// Paler than the text, and still read with ease.
QColor between(const QColor &text, const QColor &background)
{
    const auto mixed = [](int a, int b) { return (3 * a + 2 * b) / 5; };
    return {mixed(text.red(), background.red()), mixed(text.green(), background.green()),
            mixed(text.blue(), background.blue())};
}

} // namespace

// A tooltip's window: in front of a modal dialog, and never active.
NamePopup::NamePopup(QLineEdit &edit) : QTreeWidget(&edit), m_edit(edit)
{
    setWindowFlags(Qt::ToolTip);
    setObjectName("proposals");
    setFocusPolicy(Qt::NoFocus);
    setColumnCount(2);
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    header()->setStretchLastSection(true);
    header()->setMinimumSectionSize(0);
    connect(this, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem *item) { emit chosen(indexOfTopLevelItem(item)); });
}

void NamePopup::propose(const QList<Proposal> &proposals, int x)
{
    m_proposals = proposals;
    clear();
    if (proposals.isEmpty()) {
        hide();
        return;
    }
    const QBrush pale = between(palette().color(QPalette::Text), palette().color(QPalette::Base));
    QList<QTreeWidgetItem *> rows;
    for (const Proposal &proposal : proposals) {
        auto *row = new QTreeWidgetItem({proposal.text, proposal.remark});
        row->setForeground(1, pale);
        row->setToolTip(0, proposal.help);
        rows.append(row);
    }
    addTopLevelItems(rows);
    setCurrentItem(nullptr);
    place(x);
    show();
}

void NamePopup::place(int x)
{
    int first = 0, second = 0;
    for (const Proposal &proposal : qAsConst(m_proposals)) {
        first = qMax(first, fontMetrics().horizontalAdvance(proposal.text));
        second = qMax(second, fontMetrics().horizontalAdvance(proposal.remark));
    }
    first = qMin(first + betweenColumns, second > 0 ? widestFirst : widest);
    const int bar = m_proposals.size() > mostRows ? verticalScrollBar()->sizeHint().width() : 0;
    const int wanted = first + (second > 0 ? second + betweenColumns / 2 : 0) + bar + 2 * frameWidth();
    const int rows = qMin(m_proposals.size(), mostRows);
    const QSize size(qBound(narrowest, wanted, widest), rows * sizeHintForRow(0) + 2 * frameWidth());
    setColumnWidth(0, qMin(first, size.width()));

    QPoint corner = m_edit.mapToGlobal(QPoint(qMax(0, x), m_edit.height() + 1));
    if (const QScreen *screen = m_edit.screen()) {
        const QRect room = screen->availableGeometry();
        corner.setX(qMax(room.left(), qMin(corner.x(), room.right() - size.width())));
        if (corner.y() + size.height() > room.bottom()) {
            corner.setY(m_edit.mapToGlobal(QPoint()).y() - size.height() - 1);
        }
    }
    setGeometry(QRect(corner, size));
}

void NamePopup::hideEvent(QHideEvent *event)
{
    QTreeWidget::hideEvent(event);
    emit closed();
}

void NamePopup::move(int step)
{
    const int row = selectedRow();
    const int rows = topLevelItemCount();
    if (rows == 0) {
        return;
    }
    const int next = row < 0 ? (step > 0 ? 0 : rows - 1) : qBound(0, row + step, rows - 1);
    setCurrentItem(topLevelItem(next));
    scrollToItem(topLevelItem(next));
}

int NamePopup::selectedRow() const
{
    return indexOfTopLevelItem(currentItem());
}
