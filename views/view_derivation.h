// The ways to derive a view from a table, as a table.
#ifndef OVQT_VIEWS_VIEW_DERIVATION_H
#define OVQT_VIEWS_VIEW_DERIVATION_H

#include <QList>
#include <QString>

class OrvaneTableModel;

struct DerivationInputs {
    QString table; // the other table of a join; the view's table to sever or separate
    QString expression;
    QList<QString> fields;
    bool reverse = false;
    bool unique = false;
};

struct ViewDerivation {
    enum class Asks { Nothing, Expression, Fields, FieldsAndOptions };

    Asks asks;
    const char *question; // label of the dialog for an expression, title of the one for fields

    // What was tried, for the user, when it gave no rows.
    QString (*description)(const QString &table, const DerivationInputs &inputs);

    // Calls the table's operation; see there for failures.
    OrvaneTableModel *(*derive)(OrvaneTableModel &table, const DerivationInputs &inputs, const QString &name);
};

enum class Derive {
    Subset,
    Sort,
    Group,
    Ungroup,
    Join,
    OuterJoin,
    LeftJoin,
    NoJoin,
    ThetaJoin,
    Sever,
    Separate
};

const ViewDerivation &viewDerivation(Derive which);

#endif
