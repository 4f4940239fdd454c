#include "tab_separated.h"

namespace {

bool needsQuotes(const QString &cell)
{
    for (const QChar c : cell) {
        if (c == '\t' || c == '\n' || c == '\r' || c == '"') {
            return true;
        }
    }
    return cell.isEmpty() && !cell.isNull();
}

class Reader
{
public:
    explicit Reader(const QString &text) : m_text(text) {}

    bool atEnd() const { return m_at >= m_text.size(); }

    QStringList line()
    {
        QStringList cells;
        do {
            cells.append(cell());
        } while (takes('\t'));
        takes('\r');
        takes('\n');
        return cells;
    }

private:
    QString cell()
    {
        QString found;
        if (takes('"')) {
            found = QLatin1String(""); // no null text, whatever follows
            takeQuoted(found);
        }
        while (!atEnd() && !isEndOfCell()) {
            found += m_text[m_at++];
        }
        return found;
    }

    void takeQuoted(QString &found)
    {
        while (!atEnd()) {
            if (!takes('"')) {
                found += m_text[m_at++];
            } else if (takes('"')) {
                found += '"';
            } else {
                return;
            }
        }
    }

    bool isEndOfCell() const
    {
        const QChar c = m_text[m_at];
        const bool endsLine = c == '\r' && (m_at + 1 >= m_text.size() || m_text[m_at + 1] == '\n');
        return c == '\t' || c == '\n' || endsLine;
    }

    bool takes(char c)
    {
        if (atEnd() || m_text[m_at] != c) {
            return false;
        }
        ++m_at;
        return true;
    }

    const QString &m_text;
    int m_at = 0;
};

} // namespace

void appendCell(QString &text, const QString &cell)
{
    if (!needsQuotes(cell)) {
        text += cell;
        return;
    }
    text += '"';
    text += QString(cell).replace('"', QLatin1String("\"\""));
    text += '"';
}

std::vector<QStringList> tabSeparatedCells(const QString &text)
{
    std::vector<QStringList> lines;
    Reader reader(text);
    while (!reader.atEnd()) {
        lines.push_back(reader.line());
    }
    return lines;
}
