#include "expression_cursor.h"

#include <QVector>

namespace {

bool beginsName(QChar c)
{
    return c.isLetter() || c == '_';
}

bool continuesName(QChar c)
{
    return c.isLetterOrNumber() || c == '_' || c == '.';
}

int endOf(const QString &text, int start)
{
    int end = start;
    while (end < text.size() && continuesName(text[end])) {
        ++end;
    }
    return end;
}

// Behind the closing quote, or -1 where it is not found before `limit`.
int endOfQuoted(const QString &text, int start, int limit)
{
    const QChar quote = text[start];
    for (int i = start + 1; i < limit; ++i) {
        const bool escaped =
            text[i] == '\\' || (text[i] == quote && i + 1 < text.size() && text[i + 1] == quote);
        if (escaped) {
            ++i;
        } else if (text[i] == quote) {
            return i + 1;
        }
    }
    return -1;
}

} // namespace

ExpressionCursor expressionCursor(const QString &text, int position)
{
    ExpressionCursor cursor;
    cursor.wordStart = cursor.wordEnd = position;
    QVector<QString> calls; // one for each open bracket; empty where it is no call's
    QString name;           // that stands just before
    for (int i = 0; i < position;) {
        const QChar c = text[i];
        if (c == '\'' || c == '"') {
            i = endOfQuoted(text, i, position);
            if (i < 0) {
                cursor.inText = true;
                break;
            }
            name.clear();
        } else if (c.isDigit() || beginsName(c)) {
            const int end = endOf(text, i);
            name = beginsName(c) ? text.mid(i, end - i) : QString();
            if (end >= position && beginsName(c)) {
                cursor.wordStart = i;
                cursor.wordEnd = end;
                cursor.typed = text.mid(i, position - i);
            }
            i = end;
        } else {
            if (c == '(') {
                calls.append(name);
            } else if (c == ')' && !calls.isEmpty()) {
                calls.removeLast();
            }
            if (!c.isSpace()) {
                name.clear();
            }
            ++i;
        }
    }
    for (auto call = calls.crbegin(); call != calls.crend() && cursor.call.isEmpty(); ++call) {
        cursor.call = *call;
    }
    return cursor;
}
