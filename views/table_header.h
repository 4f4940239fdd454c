// The headers of a table view, which may have tens of millions of rows.
#ifndef OVQT_VIEWS_TABLE_HEADER_H
#define OVQT_VIEWS_TABLE_HEADER_H

#include <QHeaderView>

#include "selected_sections.h"

class QTableView;

// Looks and works as the toolkit's header of a table view, and tells which sections are selected without
// asking about every cell.
class TableHeader : public QHeaderView
{
    Q_OBJECT

public:
    TableHeader(Qt::Orientation orientation, QTableView *view);

protected:
    void paintEvent(QPaintEvent *event) override;
    void paintSection(QPainter *painter, const QRect &rect, int section) const override;
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

    // The row or the column of the table for which a section stands.
    virtual int placeInTable(int section) const { return section; }

    QTableView &table() const { return m_table; }

private:
    QStyle::State stateOf(int section) const;
    bool isCovered(int visual) const;
    bool isFirstShown(int visual) const;
    bool isLastShown(int visual) const;
    QStyleOptionHeader optionOf(int section, const QRect &rect) const;

    QTableView &m_table;
    SelectedSections m_selected; // at the last painting
    int m_hovered = -1;          // sections
    int m_pressed = -1;
};

#endif
