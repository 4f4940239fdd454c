// Paints the cells of a table view as the view's style and delegate would, and much faster.
#ifndef OVQT_VIEWS_CELL_PAINTER_H
#define OVQT_VIEWS_CELL_PAINTER_H

#include <memory>
#include <vector>

#include <QColor>
#include <QModelIndex>
#include <QRegion>
#include <QStyleOptionViewItem>

#include "glyph_table.h"

class QPainter;
class QStyle;
class QTableView;

// The part of a table that is to be painted, in places of the viewport.
struct Page {
    struct Row {
        int row;
        int y;
        int height; // without the line of the grid
        bool alternate;
    };
    struct Column {
        int column;
        int x;
        int width; // without the line of the grid
    };

    std::vector<Row> rows;
    std::vector<Column> columns;
    QRegion region;
    std::vector<QRect> selected; // cells as (column, row)
    QModelIndex current;         // that has the focus; invalid: none has
    QModelIndex hovered;
};

// What a cell looks like depends on the style, and a style may be anyone's. So the painter asks it: for each
// look that cells have (selected or not, by background and so on) the style paints a sample, once. Where that
// is one colour with the text that we would have drawn upon it, the painter fills and writes such cells
// itself; where it is anything else, and in every cell that has more than a text and a background, the
// delegate paints.
class CellPainter
{
public:
    // `view` must outlive the painter.
    explicit CellPainter(QTableView &view) : m_view(view) {}

    // Asks the style anew. To be called when it changes; the painter sees for itself that fonts and palettes
    // do.
    void forgetLooks() { m_looks.clear(); }

    void paint(QPainter &painter, const Page &page, const QStyleOptionViewItem &option);

private:
    // By what cells are told apart that the painter may paint itself.
    struct Appearance {
        bool selected;
        bool alternate;
        bool enabled;
        bool hasBrush;
        QRgb brush;

        bool operator==(const Appearance &) const = default;
    };
    struct Look {
        Appearance appearance;
        bool byDelegate; // what follows is not known
        QColor fill;     // invalid: what is below shows
        QColor pen;
    };
    struct Text {
        QString text;
        Qt::Alignment alignment;
    };
    // Texts of one colour.
    struct Writing {
        QColor pen;
        std::vector<quint32> glyphs;
        std::vector<QPointF> places;
    };

    void prepare(const QStyleOptionViewItem &option, int rowHeight);
    void paintCell(QPainter &painter, const QModelIndex &index, const Page &page, bool selected);
    bool paintPlainCell(QPainter &painter, const QModelIndex &index, bool selected);
    void paintByDelegate(QPainter &painter, const QModelIndex &index, const Page &page, bool selected);

    Look lookOf(const Appearance &appearance);
    Look learned(const Appearance &appearance);
    QStyleOptionViewItem sampleOption(const Appearance &appearance) const;
    QImage styledSample(const Appearance &appearance, QColor base, const Text &text) const;
    QImage ownSample(const Look &look, QColor base, const Text &text);
    QImage blankSample(QColor base) const;

    void write(QPainter &painter, const QRect &cell, const Text &text, const QColor &pen);
    bool writeFromTable(const QRect &cell, const Text &text, const QColor &pen);
    void writeAsLaidOut(QPainter &painter, const QRect &cell, const Text &text, const QColor &pen) const;
    Writing &writingIn(const QColor &pen);
    void finishWriting(QPainter &painter);

    QTableView &m_view;

    // What the looks and glyphs hold for.
    QStyleOptionViewItem m_option;
    const QStyle *m_style = nullptr;
    qint64 m_palette = 0;
    qreal m_ratio = 0; // device pixels
    QSize m_sampleSize;
    int m_textMargin = 0;
    bool m_gridCovers = false; // a line of the grid hides what is below it

    std::shared_ptr<GlyphTable> m_glyphs;
    std::vector<Look> m_looks;
    std::vector<Writing> m_writings; // emptied after each page; they keep their room
};

#endif
