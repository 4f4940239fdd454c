// Where the cursor stands in an expression that is being typed.
#ifndef OVQT_VIEWS_EXPRESSION_CURSOR_H
#define OVQT_VIEWS_EXPRESSION_CURSOR_H

#include <QString>

struct ExpressionCursor {
    bool inText = false; // between quotes
    int wordStart = 0;   // of the name that the cursor stands in or behind
    int wordEnd = 0;     // equal to wordStart when there is none
    QString typed;       // the part of the name before the cursor: "sta", "site.st"
    QString call;        // the function whose brackets hold the cursor; empty outside of any
};

// Looks at the text from its beginning on; it need not be a right expression.
ExpressionCursor expressionCursor(const QString &text, int position);

#endif
