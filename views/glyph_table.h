// The printable ASCII characters of a font as glyphs, to be set one beside the other without a text layout.
#ifndef OVQT_VIEWS_GLYPH_TABLE_H
#define OVQT_VIEWS_GLYPH_TABLE_H

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include <QFont>
#include <QPointF>
#include <QRawFont>
#include <QRectF>
#include <QString>

// What it knows of a character, and of two that stand side by side (which may be moved together), it learns
// from text layouts when they are first met. Characters that become another glyph beside one another are not
// put together, and of fonts in which more than two depend on one another the table takes no text.
class GlyphTable
{
public:
    // The table of a font, which all share.
    static std::shared_ptr<GlyphTable> of(const QFont &font);

    explicit GlyphTable(const QFont &font);

    // How much room a line of text takes; logical pixels, from the left end of the line and from its top.
    struct Measures {
        qreal width = 0;
        qreal left = 0; // of the ink
        qreal right = 0;
        qreal top = 0;
        qreal bottom = 0;
    };

    // None when the text has to be laid out: it has other characters, or blanks at its ends.
    std::optional<Measures> measured(const QString &text);

    // Adds the glyphs of a text that has been measured, the left end of its line's top at `place`.
    void set(const QString &text, QPointF place, std::vector<quint32> &glyphs,
             std::vector<QPointF> &places) const;

    const QRawFont &rawFont() const { return m_rawFont; }
    int lineHeight() const { return m_lineHeight; }

private:
    enum Known : char { Unknown, Alone, NotAlone };

    struct Glyph {
        Known known = Unknown;
        quint32 number = 0;
        qreal advance = 0; // at the end of a line
        QRectF ink;        // around the place of the glyph on the base line
    };
    struct Pair {
        Known known = Unknown;
        qreal advance = 0; // of the left one
    };

    static constexpr ushort first = 0x20;
    static constexpr std::size_t count = 0x7f - first;

    static bool has(QChar character) { return character.unicode() >= first && placeOf(character) < count; }
    static std::size_t placeOf(QChar character)
    {
        return static_cast<std::size_t>(character.unicode() - first);
    }
    const Glyph &glyph(QChar character);
    const Pair &pair(QChar left, QChar right);
    Glyph learned(QChar character) const;
    Glyph blank() const;
    Pair learned(QChar left, QChar right);
    Pair besideBlank(QChar left, QChar right) const;

    QFont m_font;
    QRawFont m_rawFont;
    bool m_takesTexts = false;
    qreal m_baseLine = 0; // below the top of the line
    int m_lineHeight = 0;
    std::array<Glyph, count> m_glyphs;
    std::array<Pair, count * count> m_pairs;
};

#endif
