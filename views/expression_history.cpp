#include "expression_history.h"

#include <ovconfig.h>

namespace {

const QString historyKey = QStringLiteral("expression_history");
constexpr int mostExpressions = 50;

} // namespace

QStringList expressionHistory(const OvConfig &config)
{
    return config.hasKey(historyKey) ? config[historyKey].toStringList() : QStringList();
}

void addToExpressionHistory(OvConfig &config, const QString &expression)
{
    QStringList expressions = expressionHistory(config);
    expressions.removeAll(expression);
    expressions.prepend(expression);
    config.configure(historyKey, QStringList(expressions.mid(0, mostExpressions)));
}
