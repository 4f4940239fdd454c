// Rows of a table laid out on pages.
#ifndef OVEDIT_PRINTED_TABLE_H
#define OVEDIT_PRINTED_TABLE_H

#include <vector>

#include <QFont>
#include <QPaintDevice>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

#include "cell_grid.h"

class OrvaneTableModel;
class QPainter;

// What is printed: the cells of a grid as they are shown.
class PrintedTable
{
public:
    // `title` and `date` stand at the top of each page.
    PrintedTable(OrvaneTableModel &table, CellGrid grid, const QString &title, const QString &date);

    // Looks at all rows for the longest text of each column. False where the user cancels. Throws
    // std::runtime_error where the table changes meanwhile.
    bool measure();

    qint64 rowCount() const { return m_grid.rowCount(); }
    int columnCount() const { return m_grid.columns.size(); }
    const QString &title() const { return m_title; }
    const QString &date() const { return m_date; }
    const QStringList &names() const { return m_names; }
    const QStringList &longestTexts() const { return m_longest; }
    bool isNumber(int column) const { return m_isNumber[column]; }

    // The number by which the table calls a row.
    int rowNumber(qint64 row) const;
    // The texts of rows [first, end), row by row. Throws std::runtime_error where the table has changed.
    QStringList texts(qint64 first, qint64 end) const;

private:
    QPointer<OrvaneTableModel> m_table;
    CellGrid m_grid;
    QString m_title;
    QString m_date;
    QStringList m_names;
    QStringList m_longest;
    QVector<bool> m_isNumber;
};

// A printed table on pages of one size. Columns that don't fit beside each other are set smaller, down to a
// limit; beyond it they go on on further sheets, which follow each other before the next rows come. Each page
// has the title, the names of its columns and, at its left, the numbers of its rows. A column that is wider
// than a page alone is cut, with dots.
class TablePages
{
public:
    // The table must outlive it, and be measured. `page` is the area to be painted, in pixels of the device.
    TablePages(const PrintedTable &table, const QFont &font, QPaintDevice &device, const QRectF &page);

    qint64 pageCount() const { return m_sheets * static_cast<qint64>(m_bands.size()); }

    // Paints a page, counted from 0. Throws as PrintedTable::texts().
    void paint(QPainter &painter, qint64 page) const;

private:
    struct Band { // columns that stand beside each other
        int first;
        int end;
    };

    QFont boldFont() const;
    void measureColumns();
    void divideColumns(double room);
    void paintHead(QPainter &painter, qint64 page) const;
    void paintNames(QPainter &painter, const Band &band) const;
    void paintRows(QPainter &painter, const Band &band, qint64 first, const QStringList &cells) const;
    void paintCell(QPainter &painter, double left, double top, double width, const QString &text,
                   bool isNumber) const;

    const PrintedTable &m_table;
    QFont m_font;
    QPaintDevice &m_device;
    QRectF m_page;
    double m_lineHeight = 0;
    double m_gap = 0; // between columns
    double m_numbersWidth = 0;
    std::vector<double> m_widths;
    std::vector<Band> m_bands;
    qint64 m_rowsPerPage = 1;
    qint64 m_sheets = 1; // pages for the rows of one band
};

#endif
