#include "cell_painter.h"

#include <algorithm>
#include <cmath>

#include <QAbstractItemModel>
#include <QBrush>
#include <QGlyphRun>
#include <QImage>
#include <QPainter>
#include <QStyle>
#include <QTableView>
#include <QTextLayout>
#include <QTextOption>

#include "cell_delegate.h"
#include "cell_ground.h"

namespace {

constexpr std::size_t mostLooks = 64;
constexpr int sampleWidth = 200; // pixels: wide enough for one sample text and too narrow for the other

const QStyle::State relevantStates = QStyle::State_Enabled | QStyle::State_Active;

// What both ways of painting write in a sample.
QString fittingSample()
{
    return QStringLiteral("AZaz09.-|_gj(@");
}
QString longSample()
{
    return QStringLiteral("\u00c5\u00e9 A V T o 0123456789 0123456789 0123456789 0123456789 (%Q)");
}

// A text in which a line may end, or that is not to be read as it stands, is the delegate's.
bool isOneLine(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        if (character.unicode() >= 0x20 && character.unicode() < 0x7f) {
            return true;
        }
        switch (character.category()) {
        case QChar::Other_Control:
        case QChar::Other_Format:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return false;
        default:
            return true;
        }
    });
}

bool isOneColour(const QImage &image)
{
    const QRgb colour = image.pixel(0, 0);
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (!std::all_of(line, line + image.width(), [colour](QRgb pixel) { return pixel == colour; })) {
            return false;
        }
    }
    return true;
}

} // namespace

void CellPainter::paint(QPainter &painter, const Page &page, const QStyleOptionViewItem &option)
{
    if (page.rows.empty() || page.columns.empty()) {
        return;
    }
    prepare(option, page.rows.front().height);
    const QAbstractItemModel &model = *m_view.model();
    for (const Page::Row &row : page.rows) {
        m_option.features.setFlag(QStyleOptionViewItem::Alternate, row.alternate);
        for (const Page::Column &column : page.columns) {
            m_option.rect = QRect(column.x, row.y, column.width, row.height);
            if (!page.region.intersects(m_option.rect)) {
                continue;
            }
            const QModelIndex index = model.index(row.row, column.column);
            if (!index.isValid()) {
                continue;
            }
            const QPoint cell(column.column, row.row);
            const bool selected = std::any_of(page.selected.begin(), page.selected.end(),
                                              [cell](const QRect &range) { return range.contains(cell); });
            paintCell(painter, index, page, selected);
        }
    }
    finishWriting(painter);
}

void CellPainter::prepare(const QStyleOptionViewItem &option, int rowHeight)
{
    const QStyle *style = m_view.style();
    const QSize sampleSize(sampleWidth, rowHeight);
    const QColor gridColour = QColor::fromRgba(
        static_cast<QRgb>(style->styleHint(QStyle::SH_Table_GridLineColor, &option, &m_view)));
    const bool gridCovers =
        m_view.showGrid() && m_view.gridStyle() == Qt::SolidLine && gridColour.alpha() == 255;
    const bool sameFont = m_glyphs != nullptr && option.font == m_option.font;
    const bool same =
        sameFont && style == m_style && option.palette.cacheKey() == m_palette &&
        sampleSize == m_sampleSize && gridCovers == m_gridCovers && m_ratio == m_view.devicePixelRatioF() &&
        option.direction == m_option.direction && option.textElideMode == m_option.textElideMode &&
        option.showDecorationSelected == m_option.showDecorationSelected &&
        (option.state & relevantStates) == (m_option.state & relevantStates) && m_looks.size() <= mostLooks;
    m_option = option;
    if (same) {
        return;
    }
    m_style = style;
    m_palette = option.palette.cacheKey();
    m_sampleSize = sampleSize;
    m_gridCovers = gridCovers;
    m_ratio = m_view.devicePixelRatioF();
    m_textMargin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &m_view) + 1;
    m_looks.clear();
    if (!sameFont) {
        m_glyphs = GlyphTable::of(option.font);
    }
}

void CellPainter::paintCell(QPainter &painter, const QModelIndex &index, const Page &page, bool selected)
{
    if (index == page.current || index == page.hovered || !paintPlainCell(painter, index, selected)) {
        paintByDelegate(painter, index, page, selected);
    }
}

// In the order and with the states in which the toolkit's table view has its delegate paint.
void CellPainter::paintByDelegate(QPainter &painter, const QModelIndex &index, const Page &page,
                                  bool selected)
{
    QStyleOptionViewItem option = m_option;
    option.state.setFlag(QStyle::State_Selected, selected);
    option.state.setFlag(QStyle::State_MouseOver, index == page.hovered);
    if (option.state & QStyle::State_Enabled) {
        const bool enabled = index.flags() & Qt::ItemIsEnabled;
        option.state.setFlag(QStyle::State_Enabled, enabled);
        option.palette.setCurrentColorGroup(enabled ? QPalette::Normal : QPalette::Disabled);
    }
    option.state.setFlag(QStyle::State_HasFocus, index == page.current);
    m_view.style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, &m_view);
    m_view.itemDelegate(index)->paint(&painter, option, index);
}

// Whether the cell is one that the painter can paint itself; if so it is painted.
bool CellPainter::paintPlainCell(QPainter &painter, const QModelIndex &index, bool selected)
{
    const QAbstractItemDelegate *delegate = m_view.itemDelegate(index);
    if (!delegate || delegate->metaObject() != &CellDelegate::staticMetaObject ||
        (m_option.features & QStyleOptionViewItem::WrapText)) {
        return false;
    }
    const QAbstractItemModel &model = *index.model();
    for (int role : {Qt::FontRole, Qt::ForegroundRole, Qt::CheckStateRole, Qt::DecorationRole}) {
        if (model.data(index, role).isValid()) {
            return false;
        }
    }
    // The delegate asks in this order, too: the model may remember a cell from one to the next.
    const QVariant alignment = model.data(index, Qt::TextAlignmentRole);
    const QVariant display = model.data(index, Qt::DisplayRole);
    const QVariant background = model.data(index, Qt::BackgroundRole);
    Appearance appearance{selected, bool(m_option.features & QStyleOptionViewItem::Alternate),
                          bool(m_option.state & QStyle::State_Enabled) &&
                              bool(model.flags(index) & Qt::ItemIsEnabled),
                          false, 0};
    if (background.userType() == QMetaType::QBrush) {
        const auto &brush = *static_cast<const QBrush *>(background.constData());
        if (brush.style() != Qt::NoBrush && brush.style() != Qt::SolidPattern) {
            return false;
        }
        appearance.hasBrush = brush.style() == Qt::SolidPattern;
        appearance.brush = appearance.hasBrush ? groundIn(m_option.palette, brush.color()).rgba() : 0;
    } else if (background.isValid()) {
        return false;
    }
    Text text;
    if (display.userType() == QMetaType::QString) {
        text.text = *static_cast<const QString *>(display.constData());
    } else if (display.isValid()) {
        return false;
    }
    text.alignment = alignment.isValid() ? Qt::Alignment(alignment.toInt()) : m_option.displayAlignment;
    const Look look = lookOf(appearance);
    if (look.byDelegate || !isOneLine(text.text)) {
        return false;
    }
    if (look.fill.isValid()) {
        painter.fillRect(m_option.rect, look.fill);
    }
    if (!text.text.isEmpty()) {
        write(painter, m_option.rect, text, look.pen);
    }
    return true;
}

CellPainter::Look CellPainter::lookOf(const Appearance &appearance)
{
    const auto known = std::find_if(m_looks.begin(), m_looks.end(), [&appearance](const Look &look) {
        return look.appearance == appearance;
    });
    if (known != m_looks.end()) {
        return *known;
    }
    m_looks.push_back(learned(appearance));
    return m_looks.back();
}

// Two different grounds tell whether the style covers what is below.
CellPainter::Look CellPainter::learned(const Appearance &appearance)
{
    const QColor ground(238, 232, 170), otherGround(25, 25, 112);
    const QPalette::ColorGroup group = !appearance.enabled                        ? QPalette::Disabled
                                       : !(m_option.state & QStyle::State_Active) ? QPalette::Inactive
                                                                                  : QPalette::Normal;
    Look look{
        appearance, true, QColor(),
        m_option.palette.color(group, appearance.selected ? QPalette::HighlightedText : QPalette::Text)};
    const QImage first = styledSample(appearance, ground, {});
    const QImage second = styledSample(appearance, otherGround, {});
    if (!isOneColour(first) || !isOneColour(second)) {
        return look;
    }
    const QRgb colour = first.pixel(0, 0), otherColour = second.pixel(0, 0);
    if (colour == otherColour) {
        look.fill = QColor::fromRgb(colour);
    } else if (colour != ground.rgb() || otherColour != otherGround.rgb()) {
        return look; // shines through
    }
    const Text samples[] = {{fittingSample(), Qt::AlignLeft},
                            {fittingSample(), Qt::AlignRight},
                            {fittingSample(), Qt::AlignCenter},
                            {longSample(), Qt::AlignLeft}};
    look.byDelegate = !std::all_of(std::begin(samples), std::end(samples), [&](const Text &text) {
        return styledSample(appearance, ground, text) == ownSample(look, ground, text);
    });
    return look;
}

QImage CellPainter::blankSample(QColor base) const
{
    QImage image(m_sampleSize * m_ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(m_ratio);
    image.fill(base);
    return image;
}

QStyleOptionViewItem CellPainter::sampleOption(const Appearance &appearance) const
{
    QStyleOptionViewItem option = m_option;
    option.rect = QRect(QPoint(), m_sampleSize);
    option.features.setFlag(QStyleOptionViewItem::Alternate, appearance.alternate);
    option.state.setFlag(QStyle::State_Selected, appearance.selected);
    option.state.setFlag(QStyle::State_Enabled, appearance.enabled);
    if (m_option.state & QStyle::State_Enabled) {
        option.palette.setCurrentColorGroup(appearance.enabled ? QPalette::Normal : QPalette::Disabled);
    }
    return option;
}

QImage CellPainter::styledSample(const Appearance &appearance, QColor base, const Text &text) const
{
    QImage image = blankSample(base);
    QPainter painter(&image);
    QStyleOptionViewItem option = sampleOption(appearance);
    m_view.style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, &m_view);
    if (appearance.hasBrush) {
        option.backgroundBrush = QBrush(QColor::fromRgba(appearance.brush));
    }
    if (!text.text.isEmpty()) {
        option.features |= QStyleOptionViewItem::HasDisplay;
        option.text = text.text;
        option.displayAlignment = text.alignment;
    }
    m_view.style()->drawControl(QStyle::CE_ItemViewItem, &option, &painter, &m_view);
    return image;
}

QImage CellPainter::ownSample(const Look &look, QColor base, const Text &text)
{
    QImage image = blankSample(base);
    QPainter painter(&image);
    const QRect cell(QPoint(), m_sampleSize);
    if (look.fill.isValid()) {
        painter.fillRect(cell, look.fill);
    }
    // Apart from the page that is being painted.
    std::vector<Writing> writings;
    writings.swap(m_writings);
    write(painter, cell, text, look.pen);
    finishWriting(painter);
    writings.swap(m_writings);
    return image;
}

void CellPainter::write(QPainter &painter, const QRect &cell, const Text &text, const QColor &pen)
{
    if (!writeFromTable(cell, text, pen)) {
        writeAsLaidOut(painter, cell, text, pen);
    }
}

// Where the text stays within its cell nothing has to be cut off, and all texts of a page can be drawn at
// once.
bool CellPainter::writeFromTable(const QRect &cell, const Text &text, const QColor &pen)
{
    if (m_option.direction != Qt::LeftToRight) {
        return false; // digits and signs may change places
    }
    const std::optional<GlyphTable::Measures> measures = m_glyphs->measured(text.text);
    if (!measures) {
        return false;
    }
    const qreal room = cell.width() - 2 * m_textMargin;
    const qreal inkEnd = std::max(measures->width, measures->right);
    if (inkEnd > room) {
        return false;
    }
    const Qt::Alignment alignment = QStyle::visualAlignment(m_option.direction, text.alignment);
    qreal x = cell.x() + m_textMargin;
    if (alignment & Qt::AlignJustify) {
        return false;
    }
    if (alignment & Qt::AlignRight) {
        x += room - measures->width;
    } else if (alignment & Qt::AlignHCenter) {
        x += std::floor((room - measures->width) * 32) / 64; // as finely as text layouts place it
    }
    const QRect line = QStyle::alignedRect(Qt::LayoutDirectionAuto, text.alignment,
                                           QSize(cell.width(), m_glyphs->lineHeight()), cell);
    const int lowest = cell.bottom() + 1 + (m_gridCovers ? 1 : 0);
    if (line.y() + measures->top < cell.top() || line.y() + measures->bottom > lowest ||
        measures->left < -m_textMargin) {
        return false;
    }
    Writing &writing = writingIn(pen);
    m_glyphs->set(text.text, QPointF(x, line.y()), writing.glyphs, writing.places);
    return true;
}

// As styles write the text of an item.
void CellPainter::writeAsLaidOut(QPainter &painter, const QRect &cell, const Text &text,
                                 const QColor &pen) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::ManualWrap);
    option.setTextDirection(m_option.direction);
    option.setAlignment(QStyle::visualAlignment(m_option.direction, text.alignment));
    const QRect room = cell.adjusted(m_textMargin, 0, -m_textMargin, 0);
    QTextLayout layout(text.text, m_option.font);
    const auto layOut = [&] {
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(room.width());
        line.setPosition({});
        layout.endLayout();
        return line.naturalTextWidth();
    };
    const qreal width = layOut();
    const QRect line = QStyle::alignedRect(Qt::LayoutDirectionAuto, text.alignment,
                                           layout.boundingRect().size().toSize(), room);
    if (width > room.width()) {
        layout.setText(
            QFontMetrics(m_option.font).elidedText(text.text, m_option.textElideMode, room.width()));
        layOut();
    }
    painter.save();
    painter.setClipRect(cell);
    painter.setPen(pen);
    layout.draw(&painter, QPointF(room.x(), line.y()));
    painter.restore();
}

CellPainter::Writing &CellPainter::writingIn(const QColor &pen)
{
    const auto known = std::find_if(m_writings.begin(), m_writings.end(),
                                    [&pen](const Writing &writing) { return writing.pen == pen; });
    if (known != m_writings.end()) {
        return *known;
    }
    if (m_writings.size() >= mostLooks) {
        m_writings.erase(std::remove_if(m_writings.begin(), m_writings.end(),
                                        [](const Writing &writing) { return writing.glyphs.empty(); }),
                         m_writings.end());
    }
    return m_writings.emplace_back(Writing{pen, {}, {}});
}

void CellPainter::finishWriting(QPainter &painter)
{
    for (Writing &writing : m_writings) {
        if (!writing.glyphs.empty()) {
            QGlyphRun run;
            run.setRawFont(m_glyphs->rawFont());
            run.setRawData(writing.glyphs.data(), writing.places.data(),
                           static_cast<int>(writing.glyphs.size()));
            painter.setPen(writing.pen);
            painter.drawGlyphRun({}, run);
        }
        writing.glyphs.clear();
        writing.places.clear();
    }
}
