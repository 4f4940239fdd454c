#include "request_call.h"

#include "request_vocabulary.h"

bool RequestCall::meetsConditions() const
{
    return row.order == CheckOrder::CountFirst ? hasArguments() && pointsWhereItMust()
                                               : pointsWhereItMust() && hasArguments();
}

bool RequestCall::hasArguments() const
{
    const int count = arguments.size();
    if (row.argumentCount == RequestRow::AnyArguments || count == row.argumentCount)
        return true;
    fail(QStringLiteral("Got %1 argument%2, expected %3")
             .arg(QString::number(count), QLatin1String(count == 1 ? "" : "s"), QLatin1String(row.expected)),
         LibraryLog::Without);
    return false;
}

bool RequestCall::pointsWhereItMust() const
{
    if (row.level == PointerLevel::Table && input.table < 0) {
        fail(QStringLiteral("Invalid request -- database pointer does not point to a table"),
             LibraryLog::Without);
        return false;
    }
    if (row.level == PointerLevel::Field && input.field < 0) {
        fail(QStringLiteral("Invalid request -- database pointer does not point to a field"),
             LibraryLog::Without);
        return false;
    }
    return true;
}
