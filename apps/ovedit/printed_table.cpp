#include "printed_table.h"

#include <algorithm>

#include <QFontMetricsF>
#include <QPainter>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>

#include "readable_rows.h"

namespace {

constexpr int rowsAtOnce = 512;
constexpr double smallestScale = 0.6; // of the font, so that all columns stand beside each other
constexpr double headLines = 2.5;     // title and the line below it
constexpr double footLines = 1.5;

bool isNumber(int type)
{
    return type == dbINTEGER || type == dbREAL || type == dbBOOLEAN || type == dbYEARDAY;
}

} // namespace

// ---- The table ----------------------------------------------------------------------------------------

PrintedTable::PrintedTable(OrvaneTableModel &table, CellGrid grid, const QString &title, const QString &date)
    : m_table(&table), m_grid(std::move(grid)), m_title(title), m_date(date)
{
    for (const int column : m_grid.columns) {
        m_names.append(table.headerData(column, Qt::Horizontal).toString());
        m_isNumber.append(::isNumber(table.getColumnType(column)));
    }
    m_longest = m_names;
}

bool PrintedTable::measure()
{
    const qint64 rows = rowCount();
    const int columns = columnCount();
    for (qint64 first = 0; first < rows; first += rowsAtOnce) {
        const QStringList cells = texts(first, std::min(first + rowsAtOnce, rows));
        for (int i = 0; i < cells.size(); ++i) {
            QString &longest = m_longest[i % columns];
            if (cells[i].size() > longest.size()) {
                longest = cells[i];
            }
        }
        if (dbreport_progress("measure", static_cast<double>(first) / static_cast<double>(rows)) != 0) {
            return false;
        }
    }
    return true;
}

int PrintedTable::rowNumber(qint64 row) const
{
    for (const RowRun &run : m_grid.rows) {
        if (row < run.end - run.first) {
            return run.first + static_cast<int>(row);
        }
        row -= run.end - run.first;
    }
    return -1;
}

QStringList PrintedTable::texts(qint64 first, qint64 end) const
{
    QStringList cells;
    qint64 before = 0; // rows of the runs so far
    for (const RowRun &run : m_grid.rows) {
        const qint64 length = run.end - run.first;
        const qint64 from = std::max(first - before, qint64{0});
        const qint64 to = std::min(end - before, length);
        if (from < to) {
            checkReadable(m_table, run.first + static_cast<int>(from), run.first + static_cast<int>(to));
            cells += m_table->displayedTexts(m_grid.columns, run.first + static_cast<int>(from),
                                             run.first + static_cast<int>(to));
        }
        before += length;
        if (before >= end) {
            break;
        }
    }
    return cells;
}

// ---- Its pages ----------------------------------------------------------------------------------------

TablePages::TablePages(const PrintedTable &table, const QFont &font, QPaintDevice &device, const QRectF &page)
    : m_table(table), m_font(font), m_device(device), m_page(page)
{
    measureColumns();
    double all = m_numbersWidth;
    for (const double width : m_widths) {
        all += m_gap + width;
    }
    const double scale = all <= m_page.width() ? 1 : m_page.width() / all;
    if (scale < 1 && scale >= smallestScale) {
        m_font.setPointSizeF(m_font.pointSizeF() * scale * 0.99); // sizes of fonts come in steps
        measureColumns();
    }
    divideColumns(m_page.width() - m_numbersWidth);
    const double room = m_page.height() - (headLines + 1 + footLines) * m_lineHeight;
    m_rowsPerPage = std::max(qint64{1}, static_cast<qint64>(room / m_lineHeight));
    m_sheets = std::max(qint64{1}, (m_table.rowCount() + m_rowsPerPage - 1) / m_rowsPerPage);
}

QFont TablePages::boldFont() const
{
    QFont bold = m_font;
    bold.setBold(true);
    return bold;
}

void TablePages::measureColumns()
{
    const QFontMetricsF metrics(m_font, &m_device);
    const QFontMetricsF boldMetrics(boldFont(), &m_device);
    m_lineHeight = metrics.height() * 1.1;
    m_gap = metrics.horizontalAdvance('0') * 1.5;
    m_numbersWidth = metrics.horizontalAdvance(
        QString::number(m_table.rowNumber(std::max(m_table.rowCount() - 1, qint64{0}))));
    m_widths.clear();
    for (int column = 0; column < m_table.columnCount(); ++column) {
        m_widths.push_back(std::max(boldMetrics.horizontalAdvance(m_table.names()[column]),
                                    metrics.horizontalAdvance(m_table.longestTexts()[column])));
    }
}

void TablePages::divideColumns(double room)
{
    Band band{0, 0};
    double used = 0;
    for (int column = 0; column < m_table.columnCount(); ++column) {
        double &width = m_widths[static_cast<std::size_t>(column)];
        width = std::min(width, room - m_gap);
        if (band.end > band.first && used + m_gap + width > room) {
            m_bands.push_back(band);
            band.first = column;
            used = 0;
        }
        used += m_gap + width;
        band.end = column + 1;
    }
    m_bands.push_back(band);
}

void TablePages::paint(QPainter &painter, qint64 page) const
{
    const auto bands = static_cast<qint64>(m_bands.size());
    const Band &band = m_bands[static_cast<std::size_t>(page % bands)];
    const qint64 first = page / bands * m_rowsPerPage;
    const qint64 end = std::min(first + m_rowsPerPage, m_table.rowCount());
    const QStringList cells = m_table.texts(first, end); // before anything is painted: it may fail
    painter.save();
    painter.setPen(QPen(Qt::black, m_lineHeight / 24));
    painter.setFont(m_font);
    painter.translate(m_page.topLeft());
    paintHead(painter, page);
    paintNames(painter, band);
    paintRows(painter, band, first, cells);
    painter.restore();
}

void TablePages::paintHead(QPainter &painter, qint64 page) const
{
    const QRectF top(0, 0, m_page.width(), m_lineHeight);
    const QFontMetricsF metrics(m_font, &m_device);
    const double dateWidth = metrics.horizontalAdvance(m_table.date());
    const QFont bold = boldFont();
    painter.setFont(bold);
    painter.drawText(top, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetricsF(bold, &m_device)
                         .elidedText(m_table.title(), Qt::ElideMiddle, top.width() - dateWidth - m_gap));
    painter.setFont(m_font);
    painter.drawText(top, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, m_table.date());
    const QRectF bottom(0, m_page.height() - m_lineHeight, m_page.width(), m_lineHeight);
    painter.drawText(bottom, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextSingleLine,
                     OvTranslation::tr("Page %1 of %2").arg(page + 1).arg(pageCount()));
}

void TablePages::paintNames(QPainter &painter, const Band &band) const
{
    const double top = headLines * m_lineHeight;
    painter.setFont(boldFont());
    double left = m_numbersWidth;
    for (int column = band.first; column < band.end; ++column) {
        const double width = m_widths[static_cast<std::size_t>(column)];
        paintCell(painter, left + m_gap, top, width, m_table.names()[column], m_table.isNumber(column));
        left += m_gap + width;
    }
    painter.setFont(m_font);
    painter.drawLine(QPointF(0, top + m_lineHeight), QPointF(left, top + m_lineHeight));
}

void TablePages::paintRows(QPainter &painter, const Band &band, qint64 first, const QStringList &cells) const
{
    const int lines = cells.size() / m_table.columnCount();
    for (int line = 0; line < lines; ++line) {
        const double top = (headLines + 1.1 + line) * m_lineHeight;
        painter.setPen(Qt::darkGray);
        paintCell(painter, 0, top, m_numbersWidth, QString::number(m_table.rowNumber(first + line)), true);
        painter.setPen(Qt::black);
        double left = m_numbersWidth;
        for (int column = band.first; column < band.end; ++column) {
            const double width = m_widths[static_cast<std::size_t>(column)];
            paintCell(painter, left + m_gap, top, width, cells[line * m_table.columnCount() + column],
                      m_table.isNumber(column));
            left += m_gap + width;
        }
    }
}

void TablePages::paintCell(QPainter &painter, double left, double top, double width, const QString &text,
                           bool isNumber) const
{
    const QFontMetricsF metrics(painter.font(), &m_device);
    const bool fits = metrics.horizontalAdvance(text) <= width + 1;
    painter.drawText(QRectF(left, top, width, m_lineHeight),
                     static_cast<int>(isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter |
                         Qt::TextSingleLine | (fits ? Qt::TextDontClip : 0),
                     fits ? text : metrics.elidedText(text, Qt::ElideRight, width));
}
