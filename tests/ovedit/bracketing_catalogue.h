// A catalogue that puts every text between brackets, whatever its context, and so shows which texts of a
// window have not passed through the translation.
#ifndef ORVANE_TESTS_OVEDIT_BRACKETING_CATALOGUE_H
#define ORVANE_TESTS_OVEDIT_BRACKETING_CATALOGUE_H

#include <QRegularExpression>
#include <QSet>
#include <QTranslator>

class BracketingCatalogue : public QTranslator
{
public:
    static constexpr QChar open{0xab}, close{0xbb}; // « »

    QString translate(const char *, const char *text, const char *, int) const override
    {
        return open + QString::fromUtf8(text) + close;
    }
    bool isEmpty() const override { return false; }
};

// What of a text stands outside of all brackets and reads as words, without HTML and the names that are data.
inline QString untranslatedPart(QString text, const QSet<QString> &names)
{
    static const QRegularExpression html("<[^<>]*>|&(?:nbsp|lt|gt|amp|quot);");
    static const QRegularExpression word("[\\w./-]*\\w");
    text.replace(html, " ");
    QString outside;
    int depth = 0;
    for (const QChar letter : text) {
        depth += letter == BracketingCatalogue::open ? 1 : 0;
        if (depth == 0) {
            outside += letter;
        }
        depth -= letter == BracketingCatalogue::close ? 1 : 0;
    }
    QStringList left;
    auto words = word.globalMatch(outside.remove('&'));
    while (words.hasNext()) {
        const QString found = words.next().captured();
        static const QRegularExpression letters("\\pL\\pL");
        static const QRegularExpression nameOfView("^[a-z]+(_[a-z]+)+\\d+$");
        if (found.contains(letters) && !names.contains(found) && !found.contains(nameOfView)) {
            left.append(found);
        }
    }
    return left.join(' ');
}

#endif
