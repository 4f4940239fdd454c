#include "glyph_table.h"

#include <algorithm>
#include <cmath>

#include <QGlyphRun>
#include <QTextLayout>
#include <QTextOption>

namespace {

constexpr std::size_t mostTables = 8;
constexpr qreal smallestStep = 1.0 / 128; // half of what text layouts tell apart

// The glyphs of a text in one line.
struct Line {
    QRawFont font;
    QVector<quint32> glyphs;
    QVector<QPointF> places;
    qreal width = 0;
    qreal height = 0;
    bool plain = true; // in one piece, without lines under or through it
};

Line lineOf(const QString &text, const QFont &font)
{
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::ManualWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine made = layout.createLine();
    made.setLineWidth(1e6);
    layout.endLayout();
    Line line;
    line.width = made.cursorToX(text.size());
    line.height = layout.boundingRect().height();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    line.plain = runs.size() == 1;
    for (const QGlyphRun &run : runs) {
        line.font = run.rawFont();
        line.plain =
            line.plain && !run.underline() && !run.overline() && !run.strikeOut() && !run.isRightToLeft();
        line.glyphs += run.glyphIndexes();
        line.places += run.positions();
    }
    return line;
}

bool isClose(qreal a, qreal b)
{
    return std::abs(a - b) < smallestStep;
}

} // namespace

std::shared_ptr<GlyphTable> GlyphTable::of(const QFont &font)
{
    // Never destroyed: at exit the fonts are gone before it would be.
    static auto &tables = *new std::vector<std::pair<QFont, std::shared_ptr<GlyphTable>>>;
    const auto known = std::find_if(tables.begin(), tables.end(),
                                    [&font](const auto &entry) { return entry.first == font; });
    if (known != tables.end()) {
        return known->second;
    }
    if (tables.size() >= mostTables) {
        tables.erase(tables.begin());
    }
    return tables.emplace_back(font, std::make_shared<GlyphTable>(font)).second;
}

GlyphTable::GlyphTable(const QFont &font) : m_font(font)
{
    const Line line = lineOf(QStringLiteral("0"), font);
    if (!line.plain || line.places.size() != 1) {
        return;
    }
    m_rawFont = line.font;
    m_baseLine = line.places.first().y();
    m_lineHeight = QSizeF(0, line.height).toSize().height();
    // Substitutions by context, which may look at any number of characters.
    m_takesTexts = !m_rawFont.fontTable("GSUB").contains("calt");
}

GlyphTable::Glyph GlyphTable::learned(QChar character) const
{
    const Line line = lineOf(character, m_font);
    Glyph glyph;
    glyph.known = NotAlone;
    if (line.plain && line.places.size() == 1 && line.font == m_rawFont &&
        isClose(line.places.first().x(), 0) && isClose(line.places.first().y(), m_baseLine)) {
        glyph = {Alone, line.glyphs.first(), line.width, m_rawFont.boundingRect(line.glyphs.first())};
    }
    return glyph;
}

GlyphTable::Pair GlyphTable::learned(QChar left, QChar right)
{
    Pair pair;
    pair.known = NotAlone;
    if (left == QLatin1Char(' ') || right == QLatin1Char(' ')) {
        return besideBlank(left, right);
    }
    const Line line = lineOf(QString(left) + right, m_font);
    if (line.plain && line.places.size() == 2 && line.font == m_rawFont &&
        line.glyphs.at(0) == glyph(left).number && line.glyphs.at(1) == glyph(right).number &&
        isClose(line.places.at(0).x(), 0) && isClose(line.places.at(0).y(), m_baseLine) &&
        isClose(line.places.at(1).y(), m_baseLine) &&
        isClose(line.width, line.places.at(1).x() + glyph(right).advance)) {
        pair = {Alone, line.places.at(1).x()};
    }
    return pair;
}

const GlyphTable::Glyph &GlyphTable::glyph(QChar character)
{
    Glyph &glyph = m_glyphs[placeOf(character)];
    if (glyph.known == Unknown) {
        // A blank is no line of its own.
        glyph = character == QLatin1Char(' ') ? blank() : learned(character);
    }
    return glyph;
}

// Between two characters that have no part in it.
GlyphTable::Glyph GlyphTable::blank() const
{
    const Line line = lineOf(QStringLiteral("0 0"), m_font);
    Glyph glyph;
    glyph.known = NotAlone;
    if (line.plain && line.places.size() == 3 && line.font == m_rawFont) {
        glyph = {Alone, line.glyphs.at(1), line.places.at(2).x() - line.places.at(1).x(), QRectF()};
    }
    return glyph;
}

// Blanks at the ends of a line count otherwise: more characters around the two.
GlyphTable::Pair GlyphTable::besideBlank(QChar left, QChar right) const
{
    const Line line = lineOf(QStringLiteral("0") + left + right + QStringLiteral("0"), m_font);
    Pair pair;
    pair.known = NotAlone;
    if (line.plain && line.places.size() == 4 && line.font == m_rawFont) {
        pair = {Alone, line.places.at(2).x() - line.places.at(1).x()};
    }
    return pair;
}

const GlyphTable::Pair &GlyphTable::pair(QChar left, QChar right)
{
    Pair &pair = m_pairs[placeOf(left) * count + placeOf(right)];
    if (pair.known == Unknown) {
        pair = learned(left, right);
    }
    return pair;
}

std::optional<GlyphTable::Measures> GlyphTable::measured(const QString &text)
{
    if (!m_takesTexts || text.isEmpty() || text.front() == QLatin1Char(' ') ||
        text.back() == QLatin1Char(' ')) {
        return std::nullopt;
    }
    Measures measures;
    qreal top = 0, bottom = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (!has(text.at(i)) || (i + 1 < text.size() && !has(text.at(i + 1)))) {
            return std::nullopt;
        }
        const Glyph &here = glyph(text.at(i));
        if (here.known != Alone) {
            return std::nullopt;
        }
        measures.left = std::min(measures.left, measures.width + here.ink.left());
        measures.right = std::max(measures.right, measures.width + here.ink.right());
        top = std::min(top, here.ink.top());
        bottom = std::max(bottom, here.ink.bottom());
        if (i + 1 == text.size()) {
            measures.width += here.advance;
            break;
        }
        const Pair &both = pair(text.at(i), text.at(i + 1));
        if (both.known != Alone) {
            return std::nullopt;
        }
        measures.width += both.advance;
    }
    measures.top = m_baseLine + top;
    measures.bottom = m_baseLine + bottom;
    return measures;
}

void GlyphTable::set(const QString &text, QPointF place, std::vector<quint32> &glyphs,
                     std::vector<QPointF> &places) const
{
    qreal x = place.x();
    for (int i = 0; i < text.size(); ++i) {
        glyphs.push_back(m_glyphs[placeOf(text.at(i))].number);
        places.emplace_back(x, place.y() + m_baseLine);
        if (i + 1 < text.size()) {
            x += m_pairs[placeOf(text.at(i)) * count + placeOf(text.at(i + 1))].advance;
        }
    }
}
