// What the database library knows of its expressions: the names that one may use, and what is wrong with it.
#ifndef OVQT_VIEWS_EXPRESSION_LANGUAGE_H
#define OVQT_VIEWS_EXPRESSION_LANGUAGE_H

#include <QList>
#include <QString>

#include <orvane/db.h>

struct ExpressionField {
    QString table;
    QString name;
    QString description;
};

// The fields of a table or view, in order; empty for a stale pointer.
QList<ExpressionField> expressionFields(const Dbptr &table);

struct ExpressionFunction {
    QString name;
    QString signature;
    QString help;
};

// All functions, by groups.
const QList<ExpressionFunction> &expressionFunctions();

struct ExpressionFault {
    QString reason; // one line; empty: nothing is wrong
    int start = 0;  // characters of the text
    int length = 0;
};

// What a subset of `table`, or a theta join of it with `other` if that is valid, would be refused for.
ExpressionFault expressionFault(const Dbptr &table, const Dbptr &other, const QString &text);

#endif
