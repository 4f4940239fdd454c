#ifndef QOVUTIL_H
#define QOVUTIL_H

#include <QList>
#include <QString>

#include <ovqt_export.h>

class OvConfig;
class QDbptr;
class QWidget;

// What a database, a table, a field or a record can tell about itself, as rich text for a tooltip. A cell and
// an invalid handle give an empty text. `config` (may be null) says how a record's nulls and times are shown.
//
// Sends some twenty requests for a table and four per field for a record, and keeps nothing. A request that
// fails throws std::runtime_error out of here.
OVQT_EXPORT QString qovutil_getToolTipString(QDbptr *dbptr, OvConfig *config);

// The names in italics, separated by commas: "<i>sta</i>, <i>time</i>". No names give "<i></i>".
OVQT_EXPORT QString qovutil_stringList2QString(QList<QString> list);

// Shows an error in a modal box and waits until it is closed; returns the box's result. The box stays a child
// of `parent`; one without a parent stays until the program ends.
OVQT_EXPORT int qovutil_showError(QString text, QWidget *parent);

#endif
