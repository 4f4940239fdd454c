// The expressions used last, under the configuration key "expression_history".
#ifndef OVQT_VIEWS_EXPRESSION_HISTORY_H
#define OVQT_VIEWS_EXPRESSION_HISTORY_H

#include <QString>
#include <QStringList>

class OvConfig;

// The last one first, none twice.
QStringList expressionHistory(const OvConfig &config);

void addToExpressionHistory(OvConfig &config, const QString &expression);

#endif
