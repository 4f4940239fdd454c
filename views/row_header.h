// The vertical header of a table view over any number of rows.
#ifndef OVQT_VIEWS_ROW_HEADER_H
#define OVQT_VIEWS_ROW_HEADER_H

#include <QAbstractTableModel>
#include <QPointer>

#include "table_header.h"

// Some rows of a table, one after the other, as a model of their headers.
class RowWindow : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void setTable(QAbstractItemModel *table);
    int first() const { return m_first; }
    void setFirst(int row);
    void setCount(int rows);

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_count; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 1; }
    QVariant data(const QModelIndex &, int) const override { return {}; }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QPointer<QAbstractItemModel> m_table;
    int m_first = 0;
    int m_count = 1;
};

// The toolkit's header keeps 14 bytes for every row and places rows by pixels in an int, which ends at some
// hundred million. Up to a number of rows this header does the same, and all that the toolkit offers for rows
// works. Of a larger table it is a window: its sections stand for the rows from first() on, as many as there
// is room for, and the table view places its rows by their numbers.
class RowHeader : public TableHeader
{
    Q_OBJECT

    // The largest number of rows with sections of their own. For tests, which have no large tables.
    Q_PROPERTY(int mostSections READ mostSections WRITE setMostSections)

public:
    explicit RowHeader(QTableView *view);

    void setModel(QAbstractItemModel *model) override;
    void setSelectionModel(QItemSelectionModel *selection) override;

    int mostSections() const { return m_mostSections; }
    void setMostSections(int rows);

    bool isWindow() const { return model() == &m_window; }

    // The first row in sight. Of a window only.
    int first() const { return m_window.first(); }
    void setFirst(int row) { m_window.setFirst(row); }

    // How many rows there is room for, in part or in full. The window grows where they are more.
    void makeRoomFor(int rows);

signals:
    // As sectionPressed() and sectionEntered(), of rows of the table.
    void rowPressed(int row);
    void rowEntered(int row);

    // It is a window now, or none any more, or the table has another number of rows.
    void rowsChanged();

protected:
    void paintSection(QPainter *painter, const QRect &rect, int section) const override;
    int placeInTable(int section) const override { return isWindow() ? first() + section : section; }

private slots:
    void followTable();

private:
    int rows() const { return m_shown == nullptr ? 0 : m_shown->rowCount(); }
    void emitFor(int section, void (RowHeader::*signal)(int));

    RowWindow m_window;
    int m_room = 1;
    QPointer<QAbstractItemModel> m_shown; // the table
    int m_mostSections;
};

#endif
